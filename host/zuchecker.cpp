#include "zuchecker.h"

#include "messagewriter.h"
#include "programsources.h"
#include "vocabulary.h"

namespace {

using Token = ZuTokenizer::Token;

const QLatin1String openers("{([");
const QLatin1String closers("})]");

bool isOpener(QChar bracket)
{
    return openers.contains(bracket);
}

QChar closerOf(QChar opener)
{
    return closers.at(openers.indexOf(opener));
}

QChar openerOf(QChar closer)
{
    return openers.at(closers.indexOf(closer));
}

// The compiler's codes for "a closing bracket of this kind is missing".
int missingCloserCode(QChar opener)
{
    return opener == QLatin1Char('{') ? 12 : opener == QLatin1Char('(') ? 31 : 43;
}

// ... and for "this closing bracket closes nothing".
int strayCloserCode(QChar closer)
{
    return closer == QLatin1Char('}') ? 23 : closer == QLatin1Char(')') ? 51 : 49;
}

QString quoted(QChar bracket)
{
    return QLatin1Char('"') + QString(bracket) + QLatin1Char('"');
}

} // namespace

ZuChecker::ZuChecker(const Vocabulary &vocabulary)
{
    for (const Vocabulary::Operation &operation : vocabulary.operations())
        m_operations << operation.name << operation.secondName;
    for (const Vocabulary::Type &type : vocabulary.types())
        m_types << type.name << type.secondName;
    // An absent second name is empty, and no word is.
    m_operations.remove(QString());
    m_types.remove(QString());
}

// Definitions are collected from every program first: a project's program
// may call what a later one defines.
ZuChecker::Result ZuChecker::check(const QVector<Program> &programs) const
{
    QVector<Tokens> tokens;
    QSet<QString> known = m_operations + m_types;
    for (const Program &program : programs) {
        tokens << ZuTokenizer::tokens(program.text);
        known += definedOperations(tokens.constLast());
    }

    for (int i = 0; i < programs.size(); ++i) {
        Finding finding;
        if (!findError(tokens.at(i), known, &finding))
            continue;
        const Program &program = programs.at(i);
        const QString sourceLine = ZuTokenizer::lines(program.text).value(finding.line - 1);
        return {FoundError, MessageWriter::locatedError(program.fileName, finding.line, finding.column,
                                                        finding.code, finding.description, sourceLine)};
    }
    return {ReadyToRun, MessageWriter::readyToRun()};
}

ZuChecker::Result ZuChecker::checkFile(const QString &directory, const QString &fileName) const
{
    ProgramSources sources;
    if (!sources.read(directory, fileName)) {
        return {Unreadable, MessageWriter::systemError(QStringLiteral("reading"), sources.error(),
                                                       sources.failedFile())};
    }
    return check(sources.programs());
}

// A type name, the new operation's name, then "(".
QSet<QString> ZuChecker::definedOperations(const Tokens &tokens) const
{
    QSet<QString> defined;
    for (int i = 1; i < tokens.size(); ++i) {
        const Token &type = tokens.at(i - 1);
        const Token &name = tokens.at(i);
        if (type.kind == Token::Word && m_types.contains(type.text)
                && name.kind == Token::Word && name.beforeBracket)
            defined << name.text;
    }
    return defined;
}

// The first error as a compiler reading from the top meets it: a closing
// bracket where it cannot stand, a string or an unknown call at once, and
// an unclosed bracket only at the end of the program.
bool ZuChecker::findError(const Tokens &tokens, const QSet<QString> &known, Finding *finding)
{
    QVector<Token> open;
    for (const Token &token : tokens) {
        if (token.kind == Token::UnclosedString) {
            *finding = {token.line, token.column, 18, QStringLiteral("string not closed on its line")};
            return true;
        }
        if (token.kind == Token::Word && token.beforeBracket && !known.contains(token.text)) {
            *finding = {token.line, token.column, 27, QStringLiteral("unknown operation ") + token.text};
            return true;
        }
        if (token.kind != Token::Bracket)
            continue;

        const QChar bracket = token.text.at(0);
        if (isOpener(bracket)) {
            open << token;
            continue;
        }
        const QChar opener = open.isEmpty() ? QChar() : open.constLast().text.at(0);
        if (!opener.isNull() && closerOf(opener) == bracket) {
            open.removeLast();
            continue;
        }
        // Inside round or square brackets their own closer is what is
        // missing; anywhere else this closer has nothing to close.
        if (opener == QLatin1Char('(') || opener == QLatin1Char('[')) {
            *finding = {token.line, token.column, missingCloserCode(opener),
                        quoted(closerOf(opener)) + QStringLiteral(" expected before ") + quoted(bracket)};
        } else {
            *finding = {token.line, token.column, strayCloserCode(bracket),
                        quoted(bracket) + QStringLiteral(" closes no ") + quoted(openerOf(bracket))};
        }
        return true;
    }
    if (open.isEmpty())
        return false;

    const Token &unclosed = open.constLast();
    const QChar opener = unclosed.text.at(0);
    *finding = {unclosed.line, unclosed.column, missingCloserCode(opener),
                QStringLiteral("end of program with this ") + quoted(opener) + QStringLiteral(" not closed")};
    return true;
}
