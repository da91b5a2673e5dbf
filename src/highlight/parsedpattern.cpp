#include "parsedpattern.h"

namespace {

ParsedPattern::Item character(QChar ch)
{
    ParsedPattern::Item item;
    item.ranges.append({ ch.unicode(), ch.unicode() });
    return item;
}

} // namespace

ParsedPattern::ParsedPattern(const QString &pattern)
    : pattern(pattern)
{
    readAlternatives();
    valid = !failed && atEnd();
}

// Anything this reading does not follow makes the whole pattern invalid.
ParsedPattern::Item ParsedPattern::fail()
{
    failed = true;
    return Item();
}

// Up to the closing parenthesis or the end. The group's index is taken
// before the groups inside it are read, so the whole pattern is group 0.
int ParsedPattern::readAlternatives()
{
    const int group = groups.size();
    groups.append(Alternatives());
    Alternatives alternatives { readSequence() };
    while (!failed && !atEnd() && peek() == QLatin1Char('|')) {
        ++position;
        alternatives.append(readSequence());
    }
    groups[group] = alternatives;
    return group;
}

ParsedPattern::Sequence ParsedPattern::readSequence()
{
    Sequence items;
    while (!failed && !atEnd() && peek() != QLatin1Char('|') && peek() != QLatin1Char(')')) {
        Item item = readAtom();
        readQuantifiers(&item);
        items.append(item);
    }
    return items;
}

ParsedPattern::Item ParsedPattern::readAtom()
{
    const QChar ch = next();
    switch (ch.unicode()) {
    case '(':
        return readGroup();
    case '[':
        return readClass();
    case '\\':
        return readEscape();
    case '^':
    case '$':
        return Item(Item::LineAnchor);
    case '.':
        return Item(Item::AnyChar);
    case '*':
    case '+':
    case '?':
    case '{':
    case '}':
    case ']':
        return fail();
    default:
        return character(ch);
    }
}

// Quantifiers may follow one another, as in "a+?": the item is optional
// when any of them allows it to be absent.
void ParsedPattern::readQuantifiers(Item *item)
{
    while (!failed && !atEnd()) {
        Item::Repeat repeat = Item::OtherRepeat;
        switch (peek().unicode()) {
        case '*':
            repeat = Item::Star;
            item->optional = true;
            break;
        case '+':
            repeat = Item::Plus;
            break;
        case '?':
            item->optional = true;
            break;
        case '{':
            if (!readCount(item))
                return;
            break;
        default:
            return;
        }
        ++position;
        item->repeat = item->repeat == Item::Once ? repeat : Item::OtherRepeat;
    }
}

// "{n}", "{n,}" or "{n,m}", of which only n matters; stops at the "}".
bool ParsedPattern::readCount(Item *item)
{
    const int close = pattern.indexOf(QLatin1Char('}'), position);
    bool isNumber = false;
    const int minimum = close < 0 ? 0
                                  : pattern.mid(position + 1, close - position - 1)
                                        .section(QLatin1Char(','), 0, 0).toInt(&isNumber);
    if (!isNumber) {
        fail();
        return false;
    }
    item->optional = item->optional || minimum == 0;
    position = close;
    return true;
}

ParsedPattern::Item ParsedPattern::readGroup()
{
    if (!atEnd() && peek() == QLatin1Char('?')) {
        // Only the non-capturing group; look-aheads are beyond this reading.
        if (position + 1 >= pattern.size() || pattern.at(position + 1) != QLatin1Char(':'))
            return fail();
        position += 2;
    }
    Item item(Item::Group);
    item.group = readAlternatives();
    if (atEnd() || peek() != QLatin1Char(')'))
        return fail();
    ++position;
    return item;
}

ParsedPattern::Item ParsedPattern::readClass()
{
    if (atEnd() || peek() == QLatin1Char(']'))
        return fail();
    Item item;
    item.negated = peek() == QLatin1Char('^');
    if (item.negated)
        ++position;
    while (!atEnd() && peek() != QLatin1Char(']')) {
        QChar first = next();
        if (first == QLatin1Char('[') || atEnd())
            return fail();
        if (first == QLatin1Char('\\')) {
            first = next();
            if (first.isLetterOrNumber())
                return fail();
            item.escapedBlank = item.escapedBlank || first.isSpace();
        }
        QChar last = first;
        if (position + 1 < pattern.size() && peek() == QLatin1Char('-')
            && pattern.at(position + 1) != QLatin1Char(']')) {
            last = pattern.at(position + 1);
            position += 2;
            if (last == QLatin1Char('\\') || last == QLatin1Char('[') || last < first)
                return fail();
        }
        item.ranges.append({ first.unicode(), last.unicode() });
    }
    if (atEnd())
        return fail();
    ++position;
    return item;
}

ParsedPattern::Item ParsedPattern::readEscape()
{
    if (atEnd())
        return fail();
    const QChar ch = next();
    if (ch == QLatin1Char('b'))
        return Item(Item::Boundary);
    if (ch == QLatin1Char('B'))
        return Item(Item::NotBoundary);
    if (QStringLiteral("dDwWsS").contains(ch))
        return Item(Item::ClassEscape);
    // Character codes and back references: beyond this reading.
    if (ch.isLetterOrNumber())
        return fail();
    Item item = character(ch);
    item.escapedBlank = ch.isSpace();
    return item;
}
