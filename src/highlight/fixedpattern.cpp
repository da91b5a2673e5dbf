#include "fixedpattern.h"

#include "patternstart.h"

static bool isPunctuation(QChar ch)
{
    return !ch.isLetterOrNumber() && !ch.isSpace();
}

FixedPattern::FixedPattern(const QString &pattern)
    : pattern(pattern)
{
    valid = readSequence(&steps) && atEnd();
    for (const Step &step : qAsConst(steps)) {
        if (step.kind == Step::Chars)
            ++matchLength;
    }
}

bool FixedPattern::Step::matches(QChar ch) const
{
    const ushort code = ch.unicode();
    for (const Range &range : ranges) {
        if (code >= range.first && code <= range.last)
            return !negated;
    }
    return negated;
}

// A sequence, or alternatives that are each one character: "p|q" is the
// class "[pq]". Longer alternatives could differ in length.
bool FixedPattern::readSequence(QVector<Step> *sequence)
{
    QVector<Step> items;
    while (!atEnd() && pattern.at(position) != QLatin1Char('|') && pattern.at(position) != QLatin1Char(')')) {
        if (!readItem(&items))
            return false;
    }
    if (atEnd() || pattern.at(position) != QLatin1Char('|')) {
        *sequence += items;
        return true;
    }

    Step alternatives;
    while (true) {
        if (items.size() != 1 || items.first().kind != Step::Chars || items.first().negated)
            return false;
        alternatives.ranges += items.first().ranges;
        if (atEnd() || pattern.at(position) != QLatin1Char('|'))
            break;
        ++position;
        items.clear();
        while (!atEnd() && pattern.at(position) != QLatin1Char('|') && pattern.at(position) != QLatin1Char(')')) {
            if (!readItem(&items))
                return false;
        }
    }
    sequence->append(alternatives);
    return true;
}

bool FixedPattern::readItem(QVector<Step> *items)
{
    const QChar ch = next();
    Step step;
    switch (ch.unicode()) {
    case '(':
        if (!atEnd() && pattern.at(position) == QLatin1Char('?')) {
            if (position + 1 >= pattern.size() || pattern.at(position + 1) != QLatin1Char(':'))
                return false;
            position += 2;
        }
        if (!readSequence(items) || atEnd() || next() != QLatin1Char(')'))
            return false;
        break;
    case '[':
        if (!readClass(&step))
            return false;
        items->append(step);
        break;
    case '.':
        step.negated = true; // excludes nothing
        items->append(step);
        break;
    case '\\': {
        if (atEnd())
            return false;
        const QChar escaped = next();
        if (escaped == QLatin1Char('b') || escaped == QLatin1Char('B')) {
            step.kind = escaped == QLatin1Char('b') ? Step::Boundary : Step::NotBoundary;
        } else if (isPunctuation(escaped)) {
            step.ranges.append({ escaped.unicode(), escaped.unicode() });
        } else {
            return false;
        }
        items->append(step);
        break;
    }
    case ')':
    case '|':
    case '^':
    case '$':
    case '?':
    case '*':
    case '+':
    case '{':
    case '}':
    case ']':
        return false;
    default:
        step.ranges.append({ ch.unicode(), ch.unicode() });
        items->append(step);
        break;
    }
    // A quantifier makes the length vary.
    return atEnd() || !QStringLiteral("?*+{").contains(pattern.at(position));
}

bool FixedPattern::readClass(Step *step)
{
    if (!atEnd() && pattern.at(position) == QLatin1Char('^')) {
        step->negated = true;
        ++position;
    }
    if (atEnd() || pattern.at(position) == QLatin1Char(']'))
        return false;
    while (!atEnd() && pattern.at(position) != QLatin1Char(']')) {
        QChar first = next();
        if (first == QLatin1Char('[') || atEnd())
            return false;
        if (first == QLatin1Char('\\')) {
            first = next();
            if (!isPunctuation(first) || atEnd())
                return false;
        }
        QChar last = first;
        if (position + 1 < pattern.size() && pattern.at(position) == QLatin1Char('-')
            && pattern.at(position + 1) != QLatin1Char(']')) {
            last = pattern.at(position + 1);
            position += 2;
            if (last == QLatin1Char('\\') || last == QLatin1Char('[') || last < first)
                return false;
        }
        step->ranges.append({ first.unicode(), last.unicode() });
    }
    if (atEnd())
        return false;
    ++position;
    return true;
}

bool FixedPattern::matchesAt(const QString &text, int start) const
{
    int at = start;
    for (const Step &step : steps) {
        switch (step.kind) {
        case Step::Boundary:
            if (!PatternStart::isWordBoundary(text, at))
                return false;
            break;
        case Step::NotBoundary:
            if (PatternStart::isWordBoundary(text, at))
                return false;
            break;
        case Step::Chars:
            if (at >= text.size() || !step.matches(text.at(at)))
                return false;
            ++at;
            break;
        }
    }
    return true;
}

QVector<QChar> FixedPattern::firstChars(int limit) const
{
    QVector<QChar> chars;
    for (const Step &step : steps) {
        if (step.kind != Step::Chars)
            continue;
        if (step.negated)
            return {};
        for (const Range &range : step.ranges) {
            if (chars.size() + range.last - range.first + 1 > limit)
                return {};
            for (uint code = range.first; code <= range.last; ++code)
                chars.append(QChar(ushort(code)));
        }
        break;
    }
    return chars;
}
