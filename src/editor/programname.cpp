#include "programname.h"

#include "codepage.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextCodec>

#include <algorithm>

// Long enough for any real name, and far from the file system's limit
// once a temporary file's suffix is added.
static const int maximumBytes = 200;

static QString tr(const char *text)
{
    return QCoreApplication::translate("programname", text);
}

QString nameProblem(const QString &name, const char *extension)
{
    if (name.isEmpty())
        return tr("Имя не задано.");
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return tr("Имена «.» и «..» принадлежат каталогам.");
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        return tr("Имя не может содержать «/» или «\\».");
    const bool control = std::any_of(name.begin(), name.end(), [](QChar ch) {
        return ch.category() == QChar::Other_Control;
    });
    if (control)
        return tr("Имя не может содержать управляющие символы.");
    // Projects hold the name in windows-1251, the file system in its own
    // encoding: it has to fit both.
    const QString fileName = name + QLatin1String(extension);
    if (windows1251()->fromUnicode(fileName).size() > maximumBytes || QFile::encodeName(fileName).size() > maximumBytes)
        return tr("Имя файла длиннее %1 байт.").arg(maximumBytes);
    return QString();
}

QString refusedNameText(const QString &name, const QString &problem)
{
    return tr("Недопустимое имя «%1».\n%2").arg(name, problem);
}
