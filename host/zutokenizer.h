#ifndef ZUTOKENIZER_H
#define ZUTOKENIZER_H

#include <QString>
#include <QStringList>
#include <QVector>

// A Zu program's text as the checker reads it: its words, numbers, strings,
// brackets and other signs with their places. Blanks and comments (from two
// backticks to the end of the line) are left out. A string runs from one
// double quote to the next on the same line; a string that its line does not
// close ends the tokens, as it ends what a compiler can read.
class ZuTokenizer
{
public:
    struct Token
    {
        enum Kind { Word, Number, String, Bracket, Sign, UnclosedString };

        Kind kind;
        QString text;
        int line;    // from 1
        int column;  // from 0
        // A word that "(" follows on its line, with nothing but blanks
        // between: a call, or the name of an operation being defined.
        bool beforeBracket = false;
    };

    // CR, LF and CR LF each end a line, as in the editor.
    static QStringList lines(const QString &text);
    static QVector<Token> tokens(const QString &text);

private:
    // Returns false at a string its line does not close.
    static bool addLine(QVector<Token> &tokens, const QString &line, int number);
};

#endif // ZUTOKENIZER_H
