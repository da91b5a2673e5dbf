#include "simplepattern.h"

#include "patternstart.h"

static bool isPunctuation(QChar ch)
{
    return !ch.isLetterOrNumber() && !ch.isSpace();
}

static bool isQuantifier(QChar ch)
{
    return QStringLiteral("?*+{").contains(ch);
}

SimplePattern::SimplePattern(const QString &pattern)
    : pattern(pattern)
{
    valid = readSequence(&steps) && atEnd();
    for (int i = 0; i < steps.size(); ++i) {
        if (steps.at(i).repeated)
            repeatedStep = i;
        else if (steps.at(i).kind == Step::Chars)
            ++shortest;
    }
}

bool SimplePattern::Step::matches(QChar ch) const
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
bool SimplePattern::readSequence(QVector<Step> *sequence)
{
    auto readItems = [this](QVector<Step> *items) {
        while (!atEnd() && pattern.at(position) != QLatin1Char('|') && pattern.at(position) != QLatin1Char(')')) {
            if (!readItem(items))
                return false;
        }
        return true;
    };
    QVector<Step> items;
    if (!readItems(&items))
        return false;
    if (atEnd() || pattern.at(position) != QLatin1Char('|')) {
        *sequence += items;
        return true;
    }

    Step alternatives;
    while (true) {
        if (items.size() != 1 || items.first().kind != Step::Chars || items.first().negated
            || items.first().repeated)
            return false;
        alternatives.ranges += items.first().ranges;
        if (atEnd() || pattern.at(position) != QLatin1Char('|'))
            break;
        ++position;
        items.clear();
        if (!readItems(&items))
            return false;
    }
    sequence->append(alternatives);
    return true;
}

bool SimplePattern::readItem(QVector<Step> *items)
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
        // A repeated group is beyond this reading.
        return atEnd() || !isQuantifier(pattern.at(position));
    case '[':
        if (!readClass(&step))
            return false;
        break;
    case '.':
        step.negated = true; // excludes nothing
        break;
    case '\\': {
        if (atEnd())
            return false;
        const QChar escaped = next();
        if (escaped == QLatin1Char('b') || escaped == QLatin1Char('B')) {
            step.kind = escaped == QLatin1Char('b') ? Step::Boundary : Step::NotBoundary;
            items->append(step);
            return atEnd() || !isQuantifier(pattern.at(position));
        }
        if (!isPunctuation(escaped))
            return false;
        step.ranges.append({ escaped.unicode(), escaped.unicode() });
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
        break;
    }
    items->append(step);
    return readRepetition(items);
}

// "*" repeats the character step just read and "+" reads as the step and
// then "*". One repetition at most, so that the longest match at a start
// is found without a search.
bool SimplePattern::readRepetition(QVector<Step> *items)
{
    if (atEnd() || !isQuantifier(pattern.at(position)))
        return true;
    const QChar quantifier = next();
    if ((quantifier != QLatin1Char('*') && quantifier != QLatin1Char('+')) || repetitions > 0)
        return false;
    ++repetitions;
    if (quantifier == QLatin1Char('+'))
        items->append(items->last());
    items->last().repeated = true;
    return atEnd() || !isQuantifier(pattern.at(position));
}

bool SimplePattern::readClass(Step *step)
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

// Steps first to last, one character each or an assertion, from *at on.
bool SimplePattern::stepsMatch(const QString &text, int first, int last, int *at) const
{
    for (int i = first; i <= last; ++i) {
        const Step &step = steps.at(i);
        switch (step.kind) {
        case Step::Boundary:
            if (!PatternStart::isWordBoundary(text, *at))
                return false;
            break;
        case Step::NotBoundary:
            if (PatternStart::isWordBoundary(text, *at))
                return false;
            break;
        case Step::Chars:
            if (*at >= text.size() || !step.matches(text.at(*at)))
                return false;
            ++*at;
            break;
        }
    }
    return true;
}

int SimplePattern::matchAt(const QString &text, int start) const
{
    int at = start;
    if (repeatedStep < 0)
        return stepsMatch(text, 0, steps.size() - 1, &at) ? at - start : -1;

    if (!stepsMatch(text, 0, repeatedStep - 1, &at))
        return -1;
    // As many repeated characters as there are, then fewer until the rest
    // fits: the longest match at this start.
    const Step &repeated = steps.at(repeatedStep);
    int runEnd = at;
    while (runEnd < text.size() && repeated.matches(text.at(runEnd)))
        ++runEnd;
    for (int end = runEnd; end >= at; --end) {
        int rest = end;
        if (stepsMatch(text, repeatedStep + 1, steps.size() - 1, &rest))
            return rest - start;
    }
    return -1;
}

QVector<QChar> SimplePattern::firstChars(int limit) const
{
    QVector<QChar> chars;
    for (const Step &step : steps) {
        if (step.kind != Step::Chars)
            continue;
        // A repeated first step may be absent: the start is then open.
        if (step.negated || step.repeated)
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
