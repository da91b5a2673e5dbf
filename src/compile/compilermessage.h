#ifndef COMPILERMESSAGE_H
#define COMPILERMESSAGE_H

#include <QString>
#include <QStringList>

// One message of the host's compiler, read: its kind and what it says.
// Reading one touches no widget; it needs a QGuiApplication all the same,
// since the word moves are those of a laid-out text document.
//
// A located error reads
//
//     <empty line>
//     In line #<line> <two words> <file name>
//     <word> <code>
//     <anything>
//     <the source line>
//     <blanks> ^
//
// and its values are taken only by the cursor moves a user would make over
// those lines: a layout that is not followed gives 0 for a number, -1 for
// the column, and whatever text the moves select for the file name; a move
// down past the last line gives nothing at all.
struct CompilerMessage
{
    enum Kind {
        LocatedError, // begins with "\nIn line #": an error at a place in a program
        SystemError,  // holds "\nError while": the system refused the compiler a file
        Ready,        // begins with "\nProgram ready to run": compiled without an error
        Other,
    };

    // Lines of a located error longer than this are read cut short, so that
    // laying them out stays cheap; the file name and the column are still
    // taken from the whole line.
    static constexpr int defaultMaxLineLength = 10000;
    // The lines a located error's cursor moves can reach: six if the
    // message follows the layout, and one more for each of the five word
    // moves that passes the end of a line into the next.
    static constexpr int linesRead = 11;

    static CompilerMessage parse(const QString &message, int maxLineLength = defaultMaxLineLength);

    // The first count lines of message, split where a text document splits
    // plain text into blocks.
    static QStringList leadingLines(const QString &message, int count);

    // The program the file name names: no directory, no last extension.
    QString programName() const;

    Kind kind = Other;

    // A located error's place, as the compiler counts: lines from 1, columns
    // from 0.
    unsigned int line = 0;
    QString fileName;
    unsigned int code = 0;
    unsigned int column = unsigned(-1);

    // A system error's error number, and the message from the file name on.
    unsigned int errorNumber = 0;
    QString fileText;
};

#endif // COMPILERMESSAGE_H
