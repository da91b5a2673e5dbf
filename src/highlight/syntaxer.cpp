#include "syntaxer.h"

#include "zusourcecode.h"

#include <algorithm>

namespace {

// QRegExp's idea of a word character, which decides where \b matches.
bool isWordChar(QChar ch)
{
    return ch.isLetterOrNumber() || ch.isMark() || ch == QLatin1Char('_');
}

bool isWordBoundary(const QString &text, int position)
{
    const bool before = position > 0 && isWordChar(text.at(position - 1));
    const bool after = position < text.size() && isWordChar(text.at(position));
    return before != after;
}

bool hasPatternChars(const QString &name)
{
    static const QString patternChars = QStringLiteral("\\^$.|?*+()[]{}");
    for (QChar ch : name) {
        if (patternChars.contains(ch))
            return true;
    }
    return false;
}

bool isWholeWordName(const QString &name)
{
    return std::all_of(name.begin(), name.end(), isWordChar);
}

QTextCharFormat textFormat(Qt::GlobalColor colour, int weight)
{
    QTextCharFormat format;
    format.setForeground(QBrush(colour));
    format.setFontWeight(weight);
    return format;
}

} // namespace

Syntaxer::Syntaxer(ZuSourceCode *editor, QStringList *operations, QStringList *types)
    : QSyntaxHighlighter(editor->document())
    , operationFormat(textFormat(Qt::red, QFont::Bold))
    , blackFormat(textFormat(Qt::black, QFont::Normal))
    , typeFormat(textFormat(Qt::blue, QFont::Normal))
    , numberFormat(textFormat(Qt::blue, QFont::Normal))
    , stringFormat(textFormat(Qt::darkGreen, QFont::Normal))
    , bracketFormat(textFormat(Qt::magenta, QFont::Bold))
    , magentaFormat(textFormat(Qt::magenta, QFont::Bold))
    , commentFormat(textFormat(Qt::gray, QFont::Normal))
{
    setParent(editor);

    // Operation names with one of these characters are coloured wherever
    // they occur, also inside other words.
    const QRegExp special(QStringLiteral("([%|&|=|_|/|<|>|~|'])"));
    QString lastName;
    bool lastWholeWord = true;
    auto addNameRule = [&](const QString &name, bool wholeWord, const QTextCharFormat &format) {
        const QString pattern = wholeWord ? QStringLiteral("\\b(") + name + QStringLiteral(")\\b")
                                          : QLatin1Char('(') + name + QLatin1Char(')');
        rules.append(HighRule { QRegExp(pattern), format });
        addMatcher(rules.size() - 1, name, wholeWord);
        lastName = name;
        lastWholeWord = wholeWord;
    };
    for (const QString &name : qAsConst(*operations))
        addNameRule(name, !name.contains(special), operationFormat);
    for (const QString &name : qAsConst(*types))
        addNameRule(name, true, typeFormat);

    // The last rule once more: harmless, and part of the rule list.
    if (rules.isEmpty()) {
        rules.append(HighRule { QRegExp(QString()), defaultFormat });
        patternRules.append(0);
    } else {
        rules.append(rules.last());
        addMatcher(rules.size() - 1, lastName, lastWholeWord);
    }

    const int firstFixedRule = rules.size();
    rules.append(HighRule { QRegExp(QStringLiteral(
        "\\b[-+]?(?:\\b[0-9]+(?:\\.[0-9]*)?|\\.[0-9]+\\b)(?:[eE][-+]?[0-9]+\\b)?\\b")), numberFormat });
    rules.append(HighRule { QRegExp(QStringLiteral("\".*\"")), stringFormat });
    rules.append(HighRule { QRegExp(QStringLiteral("\\b[{()}]\\b")), bracketFormat });
    rules.append(HighRule { QRegExp(QStringLiteral("``[^\n]*")), commentFormat });
    for (int rule = firstFixedRule; rule < rules.size(); ++rule)
        patternRules.append(rule);

    backtick = QRegExp(QStringLiteral("`"));
    literalResume.resize(literals.size());
}

// Chooses how the name rule's matches are found. Only an empty name or one
// with pattern characters needs its pattern run on every line.
void Syntaxer::addMatcher(int rule, const QString &name, bool wholeWord)
{
    if (name.isEmpty() || hasPatternChars(name)) {
        patternRules.append(rule);
    } else if (wholeWord && isWholeWordName(name)) {
        wordRules[name].append(rule);
    } else {
        literals.append(LiteralRule { rule, name, wholeWord });
        literalsByFirstChar[name.at(0).unicode()].append(literals.size() - 1);
    }
}

// Between word boundaries a name of word characters matches exactly the
// words of the line that equal it.
void Syntaxer::matchWords(const QString &text, QVector<Match> &matches) const
{
    const int size = text.size();
    int start = 0;
    while (start < size) {
        while (start < size && !isWordChar(text.at(start)))
            ++start;
        int end = start;
        while (end < size && isWordChar(text.at(end)))
            ++end;
        if (end > start) {
            const QString word = QString::fromRawData(text.constData() + start, end - start);
            const auto found = wordRules.constFind(word);
            if (found != wordRules.cend()) {
                for (int rule : found.value())
                    matches.append(Match { rule, start, end - start });
            }
        }
        start = end;
    }
}

// Each plain name is searched as its pattern would be: the leftmost
// occurrence at or after where the previous one ended.
void Syntaxer::matchLiterals(const QString &text, QVector<Match> &matches)
{
    if (literals.isEmpty())
        return;
    std::fill(literalResume.begin(), literalResume.end(), 0);
    const QStringRef line(&text);
    for (int position = 0; position < text.size(); ++position) {
        const auto candidates = literalsByFirstChar.constFind(text.at(position).unicode());
        if (candidates == literalsByFirstChar.cend())
            continue;
        for (int index : candidates.value()) {
            const LiteralRule &literal = literals.at(index);
            const int end = position + literal.text.size();
            if (position < literalResume.at(index) || !line.mid(position).startsWith(literal.text))
                continue;
            if (literal.wholeWord && !(isWordBoundary(text, position) && isWordBoundary(text, end)))
                continue;
            matches.append(Match { literal.rule, position, literal.text.size() });
            literalResume[index] = end;
        }
    }
}

void Syntaxer::matchPatterns(const QString &text, QVector<Match> &matches) const
{
    for (int rule : patternRules) {
        const QRegExp &pattern = rules.at(rule).pattern;
        int index = pattern.indexIn(text);
        while (index >= 0) {
            const int length = pattern.matchedLength();
            if (length == 0)
                break;
            matches.append(Match { rule, index, length });
            index = pattern.indexIn(text, index + length);
        }
    }
}

void Syntaxer::highlightBlock(const QString &text)
{
    // Later rules overwrite earlier ones where they overlap: apply the
    // matches in rule order, and in line order within a rule.
    lineMatches.clear();
    matchWords(text, lineMatches);
    matchLiterals(text, lineMatches);
    matchPatterns(text, lineMatches);
    std::stable_sort(lineMatches.begin(), lineMatches.end(),
                     [](const Match &a, const Match &b) { return a.rule < b.rule; });
    for (const Match &match : qAsConst(lineMatches))
        setFormat(match.start, match.length, rules.at(match.rule).format);

    highlightBackticks(text);
}

// Each backtick is grey on its own: the closing search starts at the
// opening backtick itself and finds it again.
void Syntaxer::highlightBackticks(const QString &text)
{
    setCurrentBlockState(0);
    int start = 0;
    if (previousBlockState() != 1) {
        start = backtick.indexIn(text);
        if (start < 0)
            return;
    }
    while (backtick.matchedLength() != 0) {
        const int end = backtick.indexIn(text, start);
        int length;
        if (end >= 0 && backtick.matchedLength() > 0) {
            length = end - start + 1;
        } else {
            setCurrentBlockState(1);
            length = text.size() - start;
        }
        setFormat(start, length, commentFormat);
        start = backtick.indexIn(text, start + length);
        if (start < 0)
            break;
    }
}
