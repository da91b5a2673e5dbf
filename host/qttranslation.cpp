#include "qttranslation.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

QTranslator *installQtTranslation(const QLocale &locale, const QString &directory)
{
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"), directory)
            || !QCoreApplication::installTranslator(translator)) {
        delete translator;
        return nullptr;
    }
    return translator;
}
