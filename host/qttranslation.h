#ifndef QTTRANSLATION_H
#define QTTRANSLATION_H

#include <QString>

class QLocale;
class QTranslator;

// Qt's own texts (the standard buttons of dialogs, the command line help)
// in the locale's language, as a host application has them: installs
// qtbase_<language>.qm from the directory into the application. Returns the
// translator, owned by the application (deleting it uninstalls it), or
// nullptr when the directory has none for the locale, and Qt's English
// texts stay.
QTranslator *installQtTranslation(const QLocale &locale, const QString &directory);

#endif // QTTRANSLATION_H
