#ifndef PROGRAMSOURCES_H
#define PROGRAMSOURCES_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include "zuchecker.h"

// The programs a compile request names, read from the programs directory:
// a program file, or a project file ("NAME.zup") and, in its order, the
// program files it lists. Texts are windows-1251.
class ProgramSources
{
public:
    // The program files a project file lists, as the editor reads the list:
    // one a line, CR, LF and CR LF ending a line, up to the first empty
    // line; a line without ".zu" names the program without its extension.
    static QStringList projectPrograms(const QByteArray &bytes);

    // False when a file cannot be read; error() and failedFile() then say
    // why and which.
    bool read(const QString &directory, const QString &fileName);

    const QVector<ZuChecker::Program> &programs() const;
    int error() const;  // errno
    QString failedFile() const;

private:
    bool readFile(const QString &directory, const QString &fileName, QByteArray *bytes);

    QVector<ZuChecker::Program> m_programs;
    int m_error = 0;
    QString m_failedFile;
};

#endif // PROGRAMSOURCES_H
