#ifndef ZUCHECKER_H
#define ZUCHECKER_H

#include <QSet>
#include <QString>
#include <QVector>

#include "zutokenizer.h"

class Vocabulary;

// The host's own compiler, for trying the compile loop without the real
// one: it finds the first unbalanced bracket, unclosed string or unknown
// operation of a program, or of the programs of a project, and answers with
// the message the real compiler would send for it. An operation is known
// when the vocabulary names it or a type, or when one of the programs
// defines it ("float fahrenheit(float celsius) { ... };").
class ZuChecker
{
public:
    struct Program
    {
        QString fileName;  // as the message names it
        QString text;
    };

    enum Verdict { ReadyToRun, FoundError, Unreadable };

    struct Result
    {
        Verdict verdict;
        QString message;
    };

    explicit ZuChecker(const Vocabulary &vocabulary);

    // The programs of one request, in order: a program alone, or the
    // programs of a project.
    Result check(const QVector<Program> &programs) const;
    // The same for a program file "NAME.zu" or a project file "NAME.zup" of
    // the directory, read as the editor wrote them.
    Result checkFile(const QString &directory, const QString &fileName) const;

private:
    struct Finding
    {
        int line;
        int column;
        int code;
        QString description;
    };

    using Tokens = QVector<ZuTokenizer::Token>;

    QSet<QString> definedOperations(const Tokens &tokens) const;
    static bool findError(const Tokens &tokens, const QSet<QString> &known, Finding *finding);

    QSet<QString> m_operations;  // first and second names
    QSet<QString> m_types;
};

#endif // ZUCHECKER_H
