// Any bytes as a project file: the list holds no line ends, what follows it
// is kept byte for byte, and the written file reads back as the same list
// and rest whenever windows-1251 can hold the list.

#include <QByteArray>
#include <QStringList>

#include <cstdint>

#include "codepage.h"
#include "projectfile.h"

static QByteArray quoted(const QByteArray &bytes)
{
    return bytes.toPercentEncoding(" .");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    const ProjectFile project = ProjectFile::fromBytes(bytes);

    for (const QString &program : project.programs) {
        if (program.contains(QLatin1Char('\n')) || program.contains(QLatin1Char('\r')))
            qFatal("program name with a line end: \"%s\" in %s", qPrintable(program), quoted(bytes).constData());
    }
    // The rest is the file's end from its first empty line on.
    if (!bytes.endsWith(project.rest)
        || (!project.rest.isEmpty() && !project.rest.startsWith('\n') && !project.rest.startsWith('\r')))
        qFatal("rest \"%s\" is not the end of %s after an empty line", quoted(project.rest).constData(),
               quoted(bytes).constData());

    const QByteArray written = project.toBytes();
    if (!written.endsWith(project.rest))
        qFatal("written \"%s\" lost the rest \"%s\"", quoted(written).constData(), quoted(project.rest).constData());

    // A list the code page cannot hold is never written.
    QByteArray list;
    if (!toWindows1251(project.listText(), &list))
        return 0;
    if (written != list + project.rest)
        qFatal("written \"%s\" is not the list then the rest", quoted(written).constData());
    const ProjectFile reread = ProjectFile::fromBytes(written);
    if (reread.programs != project.programs || reread.rest != project.rest)
        qFatal("%s written as %s reads back as %d programs (%d before), rest \"%s\"", quoted(bytes).constData(),
               quoted(written).constData(), reread.programs.size(), project.programs.size(),
               quoted(reread.rest).constData());
    return 0;
}
