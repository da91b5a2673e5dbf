// Any text as a message of the compiler: its kind follows the markers, a
// located error's file name is the end of one of its lines and its program
// name has no directory, a column points at a caret, and reading one
// message takes well under a second, also with lines read cut short.
//
// The input is UTF-8; an input that begins with the byte 0xff is UTF-16 in
// the machine's order after it, so that lone surrogates occur too.

#include <QElapsedTimer>
#include <QStringList>
#include <QTextBlock>
#include <QTextDocument>

#include <cstdint>
#include <cstring>

#include "compilermessage.h"
#include "offscreenapplication.h"

namespace {

// A reading that takes longer hangs somewhere.
const qint64 timeLimit = 1000;
// Cut that short, the lines of most inputs are read in part.
const int shortLines = 16;

QString messageOf(const uint8_t *data, size_t size)
{
    if (size > 0 && data[0] == 0xff) {
        QString text((int(size) - 1) / 2, Qt::Uninitialized);
        std::memcpy(text.data(), data + 1, size_t(text.size()) * 2);
        return text;
    }
    return QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
}

QByteArray quoted(const QString &text)
{
    return text.toUtf8().toPercentEncoding(" ");
}

CompilerMessage::Kind expectedKind(const QString &message)
{
    if (message.startsWith(QLatin1String("\nIn line #")))
        return CompilerMessage::LocatedError;
    if (message.contains(QLatin1String("\nError while")))
        return CompilerMessage::SystemError;
    if (message.startsWith(QLatin1String("\nProgram ready to run")))
        return CompilerMessage::Ready;
    return CompilerMessage::Other;
}

void check(const QString &message, int maxLineLength)
{
    QElapsedTimer timer;
    timer.start();
    const CompilerMessage parsed = CompilerMessage::parse(message, maxLineLength);
    const qint64 elapsed = timer.elapsed();
    if (elapsed > timeLimit)
        qFatal("reading took %lld ms: %s", elapsed, quoted(message).constData());

    if (parsed.kind != expectedKind(message))
        qFatal("kind %d, not %d: %s", parsed.kind, expectedKind(message), quoted(message).constData());
    if (parsed.kind != CompilerMessage::SystemError && (parsed.errorNumber != 0 || !parsed.fileText.isNull()))
        qFatal("a system error's values in kind %d: %s", parsed.kind, quoted(message).constData());
    if (parsed.kind != CompilerMessage::LocatedError) {
        if (parsed.line != 0 || parsed.code != 0 || parsed.column != unsigned(-1) || !parsed.fileName.isNull())
            qFatal("a located error's values in kind %d: %s", parsed.kind, quoted(message).constData());
        return;
    }

    const QStringList lines = CompilerMessage::leadingLines(message, CompilerMessage::linesRead);
    bool endOfLine = false;
    for (const QString &line : lines)
        endOfLine = endOfLine || line.endsWith(parsed.fileName);
    if (!endOfLine)
        qFatal("file name \"%s\" ends no line: %s", quoted(parsed.fileName).constData(), quoted(message).constData());
    if (parsed.programName().contains(QLatin1Char('/')))
        qFatal("program name \"%s\" has a directory: %s", quoted(parsed.programName()).constData(),
               quoted(message).constData());
    if (parsed.column != unsigned(-1)) {
        bool caret = false;
        for (const QString &line : lines)
            caret = caret || (parsed.column < unsigned(line.size()) && line.at(int(parsed.column)) == QLatin1Char('^'));
        if (!caret)
            qFatal("column %u is no caret: %s", parsed.column, quoted(message).constData());
    }
}

// The lines read are those a text document makes of the message.
void checkLines(const QString &message)
{
    QTextDocument document;
    document.setPlainText(message);
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        blocks << block.text();
    const QStringList lines = CompilerMessage::leadingLines(message, blocks.size() + 1);
    if (lines != blocks)
        qFatal("%d lines, %d blocks: %s", int(lines.size()), int(blocks.size()), quoted(message).constData());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    Q_UNUSED(argc);
    Q_UNUSED(argv);
    // The word moves lay the lines out.
    startOffscreenApplication("fuzz_compilermessage");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString message = messageOf(data, size);
    check(message, CompilerMessage::defaultMaxLineLength);
    check(message, shortLines);
    checkLines(message);
    return 0;
}
