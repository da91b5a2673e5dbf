#include "patternstart.h"

// Beyond ASCII: letters, numbers and marks.
bool PatternStart::isOtherWordChar(QChar ch)
{
    switch (ch.category()) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Number_Other:
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
        return true;
    default:
        return false;
    }
}

PatternStart::Starts PatternStart::single(ushort first, ushort last)
{
    Starts starts;
    starts.ranges.append({ first, last });
    return starts;
}

PatternStart::Starts PatternStart::zeroWidth(Empty where)
{
    Starts starts;
    starts.empty = where;
    return starts;
}

PatternStart::Starts PatternStart::anything()
{
    Starts starts;
    starts.any = true;
    return starts;
}

void PatternStart::Starts::add(const Starts &other)
{
    ranges += other.ranges;
    any = any || other.any;
}

PatternStart::PatternStart(const QString &pattern)
    : pattern(pattern)
{
    const Starts starts = alternation();
    if (failed || !atEnd() || starts.any)
        return;
    startsAtBoundary = pattern.startsWith(QLatin1String("\\b"));
    switch (starts.empty) {
    case Empty::Never:
        kind = starts.ranges.isEmpty() ? Kind::Unknown : Kind::NonEmpty;
        break;
    case Empty::Anywhere:
        kind = Kind::EmptyAtStart;
        break;
    case Empty::AtBoundary:
        // Every match then begins at a boundary, and the first boundary
        // holds one.
        kind = startsAtBoundary ? Kind::EmptyAtBoundary : Kind::Unknown;
        break;
    case Empty::Unknown:
        break;
    }
    startChars.resize(0x10000);
    for (const Range &range : starts.ranges)
        startChars.fill(true, range.first, range.last + 1);
}

int PatternStart::indexIn(const QString &text, int from) const
{
    switch (kind) {
    case Kind::Unknown:
        return from < text.size() ? from : -1;
    case Kind::NonEmpty:
        for (int i = from; i < text.size(); ++i) {
            if (startChars.testBit(text.at(i).unicode()) && (!startsAtBoundary || isWordBoundary(text, i)))
                return i;
        }
        return -1;
    case Kind::EmptyAtStart:
        break;
    case Kind::EmptyAtBoundary:
        while (from < text.size() && !isWordBoundary(text, from))
            ++from;
        break;
    }
    // The leftmost match begins here; only a start character makes it
    // longer than empty.
    return from < text.size() && startChars.testBit(text.at(from).unicode()) ? from : -1;
}

// Anything this reading does not follow makes every position a start.
PatternStart::Starts PatternStart::fail()
{
    failed = true;
    return anything();
}

// One empty alternative is enough: the best guarantee wins.
PatternStart::Starts PatternStart::alternation()
{
    Starts starts = sequence();
    while (!atEnd() && peek() == QLatin1Char('|')) {
        ++position;
        const Starts other = sequence();
        starts.add(other);
        starts.empty = qMin(starts.empty, other.empty);
    }
    return starts;
}

// Every item must be empty: the weakest guarantee wins.
PatternStart::Starts PatternStart::sequence()
{
    Starts starts = zeroWidth(Empty::Anywhere);
    while (!atEnd() && !failed && peek() != QLatin1Char('|') && peek() != QLatin1Char(')')) {
        const Starts item = quantified();
        // Only what may come first counts; the rest is read to find the end.
        if (starts.empty != Empty::Never)
            starts.add(item);
        starts.empty = qMax(starts.empty, item.empty);
    }
    return starts;
}

PatternStart::Starts PatternStart::quantified()
{
    Starts starts = atom();
    while (!atEnd() && !failed) {
        const QChar ch = peek();
        if (ch == QLatin1Char('?') || ch == QLatin1Char('*')) {
            starts.empty = Empty::Anywhere;
            ++position;
        } else if (ch == QLatin1Char('+')) {
            ++position;
        } else if (ch == QLatin1Char('{')) {
            const int close = pattern.indexOf(QLatin1Char('}'), position);
            if (close < 0)
                return fail();
            bool isNumber = false;
            const int minimum = pattern.mid(position + 1, close - position - 1)
                                    .section(QLatin1Char(','), 0, 0).toInt(&isNumber);
            if (!isNumber)
                return fail();
            if (minimum == 0)
                starts.empty = Empty::Anywhere;
            position = close + 1;
        } else {
            break;
        }
    }
    return starts;
}

PatternStart::Starts PatternStart::atom()
{
    const QChar ch = peek();
    ++position;
    switch (ch.unicode()) {
    case '(':
        return group();
    case '[':
        return characterClass();
    case '\\':
        return escape();
    case '^':
    case '$':
        return zeroWidth(Empty::Unknown);
    case '.':
        return anything();
    case '*':
    case '+':
    case '?':
    case '{':
    case '}':
    case ']':
        return fail();
    default:
        return single(ch.unicode(), ch.unicode());
    }
}

PatternStart::Starts PatternStart::group()
{
    if (!atEnd() && peek() == QLatin1Char('?')) {
        // Only the non-capturing group; look-aheads are beyond this reading.
        if (position + 1 >= pattern.size() || pattern.at(position + 1) != QLatin1Char(':'))
            return fail();
        position += 2;
    }
    const Starts inner = alternation();
    if (atEnd() || peek() != QLatin1Char(')'))
        return fail();
    ++position;
    return inner;
}

PatternStart::Starts PatternStart::characterClass()
{
    if (atEnd() || peek() == QLatin1Char(']'))
        return fail();
    // A negated class may start with almost anything.
    const bool negated = peek() == QLatin1Char('^');
    if (negated)
        ++position;
    Starts starts;
    while (!atEnd() && peek() != QLatin1Char(']')) {
        QChar first = peek();
        ++position;
        if (first == QLatin1Char('[') || atEnd())
            return fail();
        if (first == QLatin1Char('\\')) {
            first = peek();
            ++position;
            if (first.isLetterOrNumber())
                return fail();
        }
        QChar last = first;
        if (position + 1 < pattern.size() && peek() == QLatin1Char('-')
            && pattern.at(position + 1) != QLatin1Char(']')) {
            last = pattern.at(position + 1);
            position += 2;
            if (last == QLatin1Char('\\') || last == QLatin1Char('[') || last < first)
                return fail();
        }
        starts.ranges.append({ first.unicode(), last.unicode() });
    }
    if (atEnd())
        return fail();
    ++position;
    return negated ? anything() : starts;
}

PatternStart::Starts PatternStart::escape()
{
    if (atEnd())
        return fail();
    const QChar ch = peek();
    ++position;
    if (ch == QLatin1Char('b'))
        return zeroWidth(Empty::AtBoundary);
    if (ch == QLatin1Char('B'))
        return zeroWidth(Empty::Unknown);
    if (QStringLiteral("dDwWsS").contains(ch))
        return anything();
    // Character codes and back references: beyond this reading.
    if (ch.isLetterOrNumber())
        return fail();
    return single(ch.unicode(), ch.unicode());
}
