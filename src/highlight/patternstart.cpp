#include "patternstart.h"

#include "parsedpattern.h"

#include <QVector>

namespace {

// Where a part of the pattern can match the empty string, best guarantee
// first.
enum class Empty { Anywhere, AtBoundary, Unknown, Never };

// What a part of the pattern can start with.
struct Starts
{
    QVector<ParsedPattern::Range> ranges;
    bool any = false;
    Empty empty = Empty::Never;
    bool atBoundary = false; // every match, empty or not, begins at a word boundary

    void add(const Starts &other)
    {
        ranges += other.ranges;
        any = any || other.any;
    }
};

Starts alternativesStarts(const ParsedPattern &pattern, int group);

Starts itemStarts(const ParsedPattern &pattern, const ParsedPattern::Item &item)
{
    using Item = ParsedPattern::Item;
    Starts starts;
    switch (item.kind) {
    case Item::Chars:
        // A negated class may start with almost anything.
        starts.any = item.negated;
        if (!item.negated)
            starts.ranges = item.ranges;
        break;
    case Item::AnyChar:
    case Item::ClassEscape:
        starts.any = true;
        break;
    case Item::Boundary:
        starts.empty = Empty::AtBoundary;
        starts.atBoundary = true;
        break;
    case Item::NotBoundary:
    case Item::LineAnchor:
        starts.empty = Empty::Unknown;
        break;
    case Item::Group:
        starts = alternativesStarts(pattern, item.group);
        break;
    }
    if (item.optional) {
        starts.empty = Empty::Anywhere;
        starts.atBoundary = false;
    }
    return starts;
}

// Every item must be empty: the weakest guarantee wins. Only what may come
// first counts. A word boundary test holds for every match when only items
// that match no character stand before it.
Starts sequenceStarts(const ParsedPattern &pattern, const ParsedPattern::Sequence &sequence)
{
    Starts starts;
    starts.empty = Empty::Anywhere;
    bool charactersBefore = false;
    for (const ParsedPattern::Item &item : sequence) {
        if (starts.empty == Empty::Never)
            break;
        const Starts next = itemStarts(pattern, item);
        starts.atBoundary = starts.atBoundary || (!charactersBefore && next.atBoundary);
        charactersBefore = charactersBefore || next.any || !next.ranges.isEmpty();
        starts.add(next);
        starts.empty = qMax(starts.empty, next.empty);
    }
    return starts;
}

// One empty alternative is enough: the best guarantee wins. Matches begin
// at a word boundary only when those of every alternative do: in
// "\b(x)|(y)\b" a y matches inside a word.
Starts alternativesStarts(const ParsedPattern &pattern, int group)
{
    Starts starts;
    starts.atBoundary = true;
    for (const ParsedPattern::Sequence &sequence : pattern.alternatives(group)) {
        const Starts next = sequenceStarts(pattern, sequence);
        starts.add(next);
        starts.empty = qMin(starts.empty, next.empty);
        starts.atBoundary = starts.atBoundary && next.atBoundary;
    }
    return starts;
}

} // namespace

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

PatternStart::PatternStart(const QString &pattern)
    : PatternStart(ParsedPattern(pattern))
{
}

PatternStart::PatternStart(const ParsedPattern &pattern)
{
    if (!pattern.isValid())
        return;
    const Starts starts = alternativesStarts(pattern, 0);
    if (starts.any)
        return;
    startsAtBoundary = starts.atBoundary;
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
    for (const ParsedPattern::Range &range : starts.ranges)
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
