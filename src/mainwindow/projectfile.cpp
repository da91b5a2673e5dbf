#include "projectfile.h"

#include "codepage.h"

#include <QTextCodec>

static const char programExtension[] = ".zu";

// A hand-written line without the extension is the name as it stands.
static QString programOfLine(const QString &line)
{
    const QLatin1String extension(programExtension);
    return line.endsWith(extension) ? line.chopped(extension.size()) : line;
}

ProjectFile ProjectFile::fromBytes(const QByteArray &bytes)
{
    ProjectFile project;
    int start = 0;
    while (start < bytes.size()) {
        int end = start;
        while (end < bytes.size() && bytes.at(end) != '\n' && bytes.at(end) != '\r')
            ++end;
        if (end == start) {
            project.rest = bytes.mid(start);
            break;
        }
        project.programs << programOfLine(windows1251()->toUnicode(bytes.constData() + start, end - start));
        if (end < bytes.size() && bytes.at(end) == '\r' && end + 1 < bytes.size() && bytes.at(end + 1) == '\n')
            ++end;
        start = end + 1;
    }
    return project;
}

QString ProjectFile::listText() const
{
    QString text;
    for (const QString &program : programs)
        text += program + QLatin1String(programExtension) + QLatin1Char('\n');
    return text;
}

QByteArray ProjectFile::toBytes() const
{
    return windows1251()->fromUnicode(listText()) + rest;
}
