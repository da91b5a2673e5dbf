#include "simplepattern.h"

#include "patternstart.h"

SimplePattern::SimplePattern(const QString &pattern)
    : SimplePattern(ParsedPattern(pattern))
{
}

// One repetition at most, so that the longest match at a start is found
// without a search.
SimplePattern::SimplePattern(const ParsedPattern &pattern)
{
    valid = pattern.isValid() && addAlternatives(pattern, 0, &steps);
    for (int i = 0; i < steps.size(); ++i) {
        if (steps.at(i).repeated) {
            valid = valid && repeatedStep < 0;
            repeatedStep = i;
        } else if (steps.at(i).kind == Step::Chars) {
            ++shortest;
        }
    }
}

bool SimplePattern::Step::matches(QChar ch) const
{
    const ushort code = ch.unicode();
    for (const ParsedPattern::Range &range : ranges) {
        if (code >= range.first && code <= range.last)
            return !negated;
    }
    return negated;
}

bool SimplePattern::addSequence(const ParsedPattern &pattern, const ParsedPattern::Sequence &sequence,
                                QVector<Step> *steps)
{
    for (const ParsedPattern::Item &item : sequence) {
        if (!addItem(pattern, item, steps))
            return false;
    }
    return true;
}

// A sequence, or alternatives that are each one character: "p|q" is the
// class "[pq]". Longer alternatives could differ in length.
bool SimplePattern::addAlternatives(const ParsedPattern &pattern, int group, QVector<Step> *steps)
{
    const ParsedPattern::Alternatives &alternatives = pattern.alternatives(group);
    if (alternatives.size() == 1)
        return addSequence(pattern, alternatives.first(), steps);

    Step merged;
    for (const ParsedPattern::Sequence &alternative : alternatives) {
        QVector<Step> items;
        if (!addSequence(pattern, alternative, &items) || items.size() != 1
            || items.first().kind != Step::Chars || items.first().negated || items.first().repeated)
            return false;
        merged.ranges += items.first().ranges;
    }
    steps->append(merged);
    return true;
}

// "*" repeats the character step and "+" reads as the step and then "*".
// A repeated group or word-boundary test is beyond this reading, and so are
// escaped blanks, "[^]", the class escapes and the line anchors.
bool SimplePattern::addItem(const ParsedPattern &pattern, const ParsedPattern::Item &item,
                            QVector<Step> *steps)
{
    using Item = ParsedPattern::Item;
    Step step;
    switch (item.kind) {
    case Item::Group:
        return item.repeat == Item::Once && addAlternatives(pattern, item.group, steps);
    case Item::Boundary:
    case Item::NotBoundary:
        step.kind = item.kind == Item::Boundary ? Step::Boundary : Step::NotBoundary;
        steps->append(step);
        return item.repeat == Item::Once;
    case Item::Chars:
        if (item.escapedBlank || item.ranges.isEmpty())
            return false;
        step.ranges = item.ranges;
        step.negated = item.negated;
        break;
    case Item::AnyChar:
        step.negated = true; // excludes nothing
        break;
    case Item::ClassEscape:
    case Item::LineAnchor:
        return false;
    }
    steps->append(step);
    switch (item.repeat) {
    case Item::Once:
        return true;
    case Item::Plus:
        steps->append(step);
        Q_FALLTHROUGH();
    case Item::Star:
        steps->last().repeated = true;
        return true;
    case Item::OtherRepeat:
        break;
    }
    return false;
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
        for (const ParsedPattern::Range &range : step.ranges) {
            if (chars.size() + range.last - range.first + 1 > limit)
                return {};
            for (uint code = range.first; code <= range.last; ++code)
                chars.append(QChar(ushort(code)));
        }
        break;
    }
    return chars;
}
