#include "compilermessage.h"

#include <QFileInfo>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <limits>

namespace {

const QString locatedMarker = QStringLiteral("\nIn line #");
const QString systemMarker = QStringLiteral("\nError while");
const QString readyMarker = QStringLiteral("\nProgram ready to run");
const QString fileMarker = QStringLiteral("File:");

// What a text document takes for the end of a block in plain text; "\r\n"
// ends one block. U+FDD0 and U+FDD1 are its frame marks.
bool endsBlock(QChar character)
{
    const ushort code = character.unicode();
    return code == '\n' || code == '\r' || code == QChar::ParagraphSeparator || code == 0xfdd0 || code == 0xfdd1;
}

bool isAsciiDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

// An unsigned decimal number, blanks around it allowed: a word selection
// takes the blank after the word with it. Anything else is 0; a number too
// big for unsigned is the largest, which every receiver clamps.
unsigned int unsignedValue(const QString &text)
{
    const QString digits = text.trimmed();
    bool ok = false;
    const unsigned int value = digits.toUInt(&ok, 10);
    if (ok)
        return value;
    const bool allDigits = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), isAsciiDigit);
    return allDigits ? std::numeric_limits<unsigned int>::max() : 0;
}

// The rest of the line from the cursor's anchor, taken from the whole line
// rather than the document's cut one.
QString restOfLine(const QTextCursor &cursor, const QStringList &lines)
{
    const QTextBlock block = cursor.document()->findBlock(cursor.anchor());
    return lines.value(block.blockNumber()).mid(cursor.anchor() - block.position());
}

void readLocatedError(const QString &message, int maxLineLength, CompilerMessage &result)
{
    const QStringList lines = CompilerMessage::leadingLines(message, CompilerMessage::linesRead);
    QStringList cutLines;
    for (const QString &line : lines)
        cutLines << line.left(maxLineLength);
    QTextDocument document;
    document.setPlainText(cutLines.join(QLatin1Char('\n')));

    // Line 2: past "In line #", the number is the next word; two words
    // after it the file name begins, and runs to the end of the line. The
    // marker guarantees that line 2 exists and is long enough.
    QTextCursor cursor(&document);
    cursor.movePosition(QTextCursor::NextBlock);
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::MoveAnchor, locatedMarker.size() - 1);
    cursor.movePosition(QTextCursor::NextWord, QTextCursor::KeepAnchor);
    result.line = unsignedValue(cursor.selectedText());
    cursor.movePosition(QTextCursor::NextWord, QTextCursor::MoveAnchor, 2);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    result.fileName = restOfLine(cursor, lines);

    // Line 3: the code is the second word. A line that is not there gives
    // nothing, rather than a value read from another line.
    cursor.movePosition(QTextCursor::StartOfBlock);
    if (!cursor.movePosition(QTextCursor::NextBlock))
        return;
    cursor.movePosition(QTextCursor::NextWord);
    cursor.movePosition(QTextCursor::NextWord, QTextCursor::KeepAnchor);
    result.code = unsignedValue(cursor.selectedText());

    // Three lines further down, the caret under the error's column.
    cursor.movePosition(QTextCursor::StartOfBlock);
    if (!cursor.movePosition(QTextCursor::NextBlock, QTextCursor::MoveAnchor, 3))
        return;
    result.column = unsigned(restOfLine(cursor, lines).indexOf(QLatin1Char('^')));
}

} // namespace

CompilerMessage CompilerMessage::parse(const QString &message, int maxLineLength)
{
    CompilerMessage result;
    if (message.startsWith(locatedMarker)) {
        result.kind = LocatedError;
        readLocatedError(message, maxLineLength, result);
    } else if (message.contains(systemMarker)) {
        result.kind = SystemError;
        // The error number in the first brackets, the file after "File:"
        // and one character more, normally a blank. Without "File:" the
        // first five characters go, as the host's own reading has it.
        const int open = message.indexOf(QLatin1Char('('));
        const int close = message.indexOf(QLatin1Char(')'));
        if (open >= 0 && close > open)
            result.errorNumber = unsignedValue(message.mid(open + 1, close - open - 1));
        result.fileText = message.mid(message.indexOf(fileMarker) + fileMarker.size() + 1);
    } else if (message.startsWith(readyMarker)) {
        result.kind = Ready;
    }
    return result;
}

QStringList CompilerMessage::leadingLines(const QString &message, int count)
{
    QStringList lines;
    const int size = message.size();
    int start = 0;
    while (lines.size() < count) {
        int end = start;
        while (end < size && !endsBlock(message.at(end)))
            ++end;
        lines << message.mid(start, end - start);
        if (end == size)
            break;
        const bool crlf =
            message.at(end) == QLatin1Char('\r') && end + 1 < size && message.at(end + 1) == QLatin1Char('\n');
        start = end + (crlf ? 2 : 1);
    }
    return lines;
}

QString CompilerMessage::programName() const
{
    return QFileInfo(fileName).completeBaseName();
}
