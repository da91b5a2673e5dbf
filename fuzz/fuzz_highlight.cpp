// The highlighter against the rule-by-rule reference: the same names and
// lines must get the same colours at every position and the same block
// states.
//
// The input is read as text: its first line holds the operation names, its
// second the type names, both separated by blanks, and the lines after them
// are the program. In a name, ASCII letters and digits stand for themselves
// and so do the characters of the names' alphabet; any other byte stands for
// the alphabet's character at that byte modulo its size, so that any bytes
// make names of pattern characters, letters and digits. In the program,
// printable ASCII stands for itself and a control byte for one of the
// names, so that the lines meet them often.

#include <QStringList>

#include <cstdint>

#include "highlightcomparison.h"
#include "offscreenapplication.h"

namespace {

const int maximumNames = 6;
const int maximumNameLength = 8;
const int maximumLines = 8;
const int maximumLineLength = 64;

// Pattern characters the highlighter reads in its own ways, characters that
// drop the word boundaries, a few letters and digits, and a Cyrillic letter.
const QString nameAlphabet = QStringLiteral("()|[]\\*+?.{},^$-%=_abxyz019ж");

QChar nameCharacter(uchar byte)
{
    const QChar character = QChar::fromLatin1(char(byte));
    if (byte < 0x80 && (character.isLetterOrNumber() || nameAlphabet.contains(character)))
        return character;
    return nameAlphabet.at(byte % nameAlphabet.size());
}

QString lineOf(const QByteArray &bytes, const QStringList &names)
{
    QString line;
    for (const char byte : bytes) {
        const auto value = uchar(byte);
        if (value < 0x20 && !names.isEmpty())
            line += names.at(value % names.size());
        else if (value >= 0x20 && value < 0x7f)
            line += QLatin1Char(byte);
        else
            line += nameCharacter(value);
    }
    return line.left(maximumLineLength);
}

QStringList namesOf(const QByteArray &line)
{
    QStringList names;
    const QList<QByteArray> words = line.split(' ');
    for (const QByteArray &word : words) {
        if (word.isEmpty() || names.size() == maximumNames)
            continue;
        QString name;
        for (const char byte : word.left(maximumNameLength))
            name += nameCharacter(uchar(byte));
        names << name;
    }
    return names;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    Q_UNUSED(argc);
    Q_UNUSED(argv);
    // Formats need fonts.
    startOffscreenApplication("fuzz_highlight");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> inputLines =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size)).split('\n');
    const QStringList operations = namesOf(inputLines.value(0));
    const QStringList types = namesOf(inputLines.value(1));
    QStringList lines;
    for (int i = 2; i < inputLines.size() && lines.size() < maximumLines; ++i)
        lines << lineOf(inputLines.at(i), operations + types);
    const QString difference = differenceFromReference(lines, operations, types);
    if (!difference.isEmpty())
        qFatal("%s", qPrintable(difference));
    return 0;
}
