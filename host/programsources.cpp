#include "programsources.h"

#include <QDir>
#include <QFile>
#include <QTextCodec>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

const char programExtension[] = ".zu";
const char projectExtension[] = ".zup";

QTextCodec *windows1251()
{
    static QTextCodec *const codec = QTextCodec::codecForName("windows-1251");
    return codec;
}

// The errno of a failure, or 0 with the whole file in bytes; QFile would
// give only its text.
int readWholeFile(const QString &path, QByteArray *bytes)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return errno;
    bytes->clear();
    char buffer[65536];
    ssize_t count;
    while ((count = ::read(fd, buffer, sizeof buffer)) != 0) {
        if (count > 0)
            bytes->append(buffer, int(count));
        else if (errno != EINTR)
            break;
    }
    const int error = count < 0 ? errno : 0;
    ::close(fd);
    return error;
}

} // namespace

QStringList ProgramSources::projectPrograms(const QByteArray &bytes)
{
    QStringList programs;
    int start = 0;
    while (start < bytes.size()) {
        int end = start;
        while (end < bytes.size() && bytes.at(end) != '\n' && bytes.at(end) != '\r')
            ++end;
        if (end == start)
            break;
        QString program = windows1251()->toUnicode(bytes.constData() + start, end - start);
        if (!program.endsWith(QLatin1String(programExtension)))
            program += QLatin1String(programExtension);
        programs << program;
        if (end + 1 < bytes.size() && bytes.at(end) == '\r' && bytes.at(end + 1) == '\n')
            ++end;
        start = end + 1;
    }
    return programs;
}

bool ProgramSources::read(const QString &directory, const QString &fileName)
{
    m_programs.clear();
    m_error = 0;
    m_failedFile.clear();
    QStringList programFiles{fileName};
    if (fileName.endsWith(QLatin1String(projectExtension))) {
        QByteArray project;
        if (!readFile(directory, fileName, &project))
            return false;
        programFiles = projectPrograms(project);
    }
    for (const QString &programFile : qAsConst(programFiles)) {
        QByteArray text;
        if (!readFile(directory, programFile, &text))
            return false;
        m_programs.append({programFile, windows1251()->toUnicode(text)});
    }
    return true;
}

const QVector<ZuChecker::Program> &ProgramSources::programs() const
{
    return m_programs;
}

int ProgramSources::error() const
{
    return m_error;
}

QString ProgramSources::failedFile() const
{
    return m_failedFile;
}

bool ProgramSources::readFile(const QString &directory, const QString &fileName, QByteArray *bytes)
{
    m_error = readWholeFile(QDir(directory).filePath(fileName), bytes);
    if (m_error != 0)
        m_failedFile = fileName;
    return m_error == 0;
}
