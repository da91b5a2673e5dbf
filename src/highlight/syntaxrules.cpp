#include "syntaxrules.h"

#include <algorithm>
#include <cstring>

namespace {

// The key of a text's first two characters from position, or of its only
// one: a lone character pairs with U+FFFF, which no text holds.
quint32 singleKey(QChar ch)
{
    return quint32(ch.unicode()) << 16 | 0xffff;
}

quint32 prefixKey(const QString &text, int position)
{
    if (position + 1 >= text.size())
        return singleKey(text.at(position));
    return quint32(text.at(position).unicode()) << 16 | text.at(position + 1).unicode();
}

// Most prefixes start no literal: a filter by hashed key spares the look-up.
int pairFilterIndex(quint32 key)
{
    return int((key * 2654435761u) >> 16);
}

// A word's first and last characters and its length, hashed: most words
// of a line have no name of their shape, and need no look-up.
int wordShapeIndex(const QChar *word, int length)
{
    const quint32 shape = quint32(word[0].unicode()) << 16 ^ word[length - 1].unicode() ^ quint32(length) << 8;
    return int((shape * 2654435761u) >> 16);
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
    return std::all_of(name.begin(), name.end(), PatternStart::isWordChar);
}

QTextCharFormat textFormat(Qt::GlobalColor colour, int weight)
{
    QTextCharFormat format;
    format.setForeground(QBrush(colour));
    format.setFontWeight(weight);
    return format;
}

} // namespace

SyntaxRules::SyntaxRules(const QStringList &operations, const QStringList &types)
    : comment(textFormat(Qt::gray, QFont::Normal))
{
    const QTextCharFormat operationFormat = textFormat(Qt::red, QFont::Bold);
    const QTextCharFormat typeFormat = textFormat(Qt::blue, QFont::Normal);
    const QTextCharFormat numberFormat = textFormat(Qt::blue, QFont::Normal);
    const QTextCharFormat stringFormat = textFormat(Qt::darkGreen, QFont::Normal);
    const QTextCharFormat bracketFormat = textFormat(Qt::magenta, QFont::Bold);

    charRoles.fill(0, 0x10000);
    literalPairs.resize(0x10000);
    wordShapes.resize(0x10000);
    // A QRegExp made from a pattern, or copied, compiles the pattern at
    // once: for a host's hundred thousand names that takes seconds and
    // hundreds of megabytes. A pattern set on a rule in place is compiled
    // when first used, which most name rules never are, so the list has
    // room for every rule from the start (a rule per name, the last one
    // again and four fixed rules) and never copies them.
    rules.reserve(operations.size() + types.size() + 5);

    // Operation names with one of these characters are coloured wherever
    // they occur, also inside other words.
    const QRegExp special(QStringLiteral("([%|&|=|_|/|<|>|~|'])"));
    QString lastName;
    bool lastWholeWord = true;
    auto addNameRule = [&](const QString &name, bool wholeWord, const QTextCharFormat &format) {
        const QString pattern = wholeWord ? QStringLiteral("\\b(") + name + QStringLiteral(")\\b")
                                          : QLatin1Char('(') + name + QLatin1Char(')');
        rules.resize(rules.size() + 1);
        rules.last().pattern.setPattern(pattern);
        rules.last().format = format;
        addMatcher(rules.size() - 1, name, wholeWord);
        lastName = name;
        lastWholeWord = wholeWord;
    };
    for (const QString &name : operations)
        addNameRule(name, !name.contains(special), operationFormat);
    for (const QString &name : types)
        addNameRule(name, true, typeFormat);

    // The last rule once more: harmless, and part of the rule list.
    if (rules.isEmpty()) {
        rules.append(HighRule { QRegExp(QString()), QTextCharFormat() });
        addPatternRule(0);
    } else {
        rules.append(rules.last());
        addMatcher(rules.size() - 1, lastName, lastWholeWord);
    }

    const int firstSimpleRule = rules.size();
    rules.append(HighRule { QRegExp(QStringLiteral(
        "\\b[-+]?(?:\\b[0-9]+(?:\\.[0-9]*)?|\\.[0-9]+\\b)(?:[eE][-+]?[0-9]+\\b)?\\b")), numberFormat });
    rules.append(HighRule { QRegExp(QStringLiteral("\".*\"")), stringFormat });
    rules.append(HighRule { QRegExp(QStringLiteral("\\b[{()}]\\b")), bracketFormat });
    rules.append(HighRule { QRegExp(QStringLiteral("``[^\n]*")), comment });
    for (int rule = firstSimpleRule; rule < rules.size(); ++rule)
        addPatternRule(rule);

    literalResume.resize(literals.size());
    simpleResume.resize(simpleRules.size());
}

// Chooses how the name rule's matches are found. Only an empty name or one
// with pattern characters needs its pattern run on every line.
void SyntaxRules::addMatcher(int rule, const QString &name, bool wholeWord)
{
    if (name.isEmpty() || hasPatternChars(name)) {
        addPatternRule(rule);
    } else if (wholeWord && isWholeWordName(name)) {
        wordRules[name].append(rule);
        wordShapes.setBit(wordShapeIndex(name.constData(), name.size()));
    } else {
        literals.append(LiteralRule { rule, name, wholeWord });
        literalsByPrefix[prefixKey(name, 0)].append(literals.size() - 1);
        literalPairs.setBit(pairFilterIndex(prefixKey(name, 0)));
        charRoles[name.at(0).unicode()] |= StartsLiteral;
        if (name.size() == 1)
            charRoles[name.at(0).unicode()] |= IsLiteral;
    }
}

// A rule of a simple pattern is tried where one of its first characters
// stands; a rule that can start with too many characters, everywhere.
void SyntaxRules::addSimpleRule(int rule, const SimplePattern &pattern)
{
    simpleRules.append(SimpleRule { rule, pattern });
    const QVector<QChar> starts = pattern.firstChars(256);
    if (starts.isEmpty()) {
        unindexedSimpleRules.append(simpleRules.size() - 1);
        return;
    }
    for (QChar ch : starts) {
        simpleByFirstChar[ch.unicode()].append(simpleRules.size() - 1);
        charRoles[ch.unicode()] |= StartsSimpleRule;
    }
}

// A pattern that is not valid never matches, and one whose matches are all
// empty colours nothing: neither needs looking for.
void SyntaxRules::addPatternRule(int rule)
{
    const QRegExp &pattern = rules.at(rule).pattern;
    if (!pattern.isValid())
        return;
    const ParsedPattern parsed(pattern.pattern());
    const SimplePattern simple(parsed);
    if (simple.isValid() && simple.minimumLength() > 0)
        addSimpleRule(rule, simple);
    else
        patternRules.append(PatternRule { rule, PatternStart(parsed) });
}

// Between word boundaries a name of word characters matches exactly the
// words of the line that equal it.
void SyntaxRules::matchWords(const QString &text, QVector<Match> &matches) const
{
    const int size = text.size();
    int start = 0;
    while (start < size) {
        while (start < size && !PatternStart::isWordChar(text.at(start)))
            ++start;
        int end = start;
        while (end < size && PatternStart::isWordChar(text.at(end)))
            ++end;
        if (end > start && wordShapes.testBit(wordShapeIndex(text.constData() + start, end - start))) {
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

// Each name of plain text, and each rule of a simple pattern, is searched
// as its pattern would be: the leftmost occurrence at or after where the
// previous one ended. One pass over the line finds the candidates by their
// first characters (plain names by their first two).
void SyntaxRules::matchPlainAndSimple(const QString &text, QVector<Match> &matches)
{
    std::fill(literalResume.begin(), literalResume.end(), 0);
    std::fill(simpleResume.begin(), simpleResume.end(), 0);
    const quint8 *roles = charRoles.constData();
    for (int position = 0; position < text.size(); ++position) {
        if (!unindexedSimpleRules.isEmpty())
            matchSimpleRulesAt(text, position, unindexedSimpleRules, matches);
        const ushort ch = text.at(position).unicode();
        const quint8 role = roles[ch];
        if (role & StartsLiteral)
            matchLiteralsAt(text, position, matches);
        if (role & StartsSimpleRule)
            matchSimpleRulesAt(text, position, *simpleByFirstChar.constFind(ch), matches);
    }
}

void SyntaxRules::matchLiteralsAt(const QString &text, int position, QVector<Match> &matches)
{
    const QChar *chars = text.constData();
    auto matchKey = [&](quint32 key) {
        const auto candidates = literalsByPrefix.constFind(key);
        if (candidates == literalsByPrefix.cend())
            return;
        for (int index : candidates.value()) {
            const LiteralRule &literal = literals.at(index);
            const int length = literal.text.size();
            const int end = position + length;
            if (position < literalResume.at(index) || end > text.size()
                || std::memcmp(chars + position, literal.text.constData(), length * sizeof(QChar)) != 0)
                continue;
            if (literal.wholeWord && !(PatternStart::isWordBoundary(text, position) && PatternStart::isWordBoundary(text, end)))
                continue;
            matches.append(Match { literal.rule, position, length });
            literalResume[index] = end;
        }
    };
    const quint32 pair = prefixKey(text, position);
    if (literalPairs.testBit(pairFilterIndex(pair)))
        matchKey(pair);
    const quint32 single = singleKey(chars[position]);
    if (pair != single && (charRoles.at(chars[position].unicode()) & IsLiteral))
        matchKey(single);
}

void SyntaxRules::matchSimpleRulesAt(const QString &text, int position, const QVector<int> &candidates,
                                 QVector<Match> &matches)
{
    for (int index : candidates) {
        const SimpleRule &simple = simpleRules.at(index);
        if (position < simpleResume.at(index))
            continue;
        const int length = simple.pattern.matchAt(text, position);
        if (length < 0)
            continue;
        matches.append(Match { simple.rule, position, length });
        simpleResume[index] = position + length;
    }
}

void SyntaxRules::matchPatterns(const QString &text, QVector<Match> &matches) const
{
    for (const PatternRule &patternRule : patternRules) {
        const QRegExp &pattern = rules.at(patternRule.rule).pattern;
        // A match starts at a character the pattern can begin with, so the
        // search may start there; the pattern still sees the text before.
        int from = patternRule.start.indexIn(text, 0);
        while (from >= 0) {
            const int index = pattern.indexIn(text, from);
            const int length = pattern.matchedLength();
            if (index < 0 || length == 0)
                break;
            matches.append(Match { patternRule.rule, index, length });
            from = patternRule.start.indexIn(text, index + length);
        }
    }
}

// Later rules overwrite earlier ones where they overlap, and the matches of
// one rule never overlap: each character takes the format of the last rule
// that matched it.
const QVector<int> &SyntaxRules::rulesOfChars(const QString &text)
{
    lineMatches.clear();
    matchWords(text, lineMatches);
    matchPlainAndSimple(text, lineMatches);
    matchPatterns(text, lineMatches);

    ruleOfChar.fill(-1, text.size());
    for (const Match &match : qAsConst(lineMatches)) {
        for (int i = match.start; i < match.start + match.length; ++i)
            ruleOfChar[i] = qMax(ruleOfChar.at(i), match.rule);
    }
    return ruleOfChar;
}
