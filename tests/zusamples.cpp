#include "zusamples.h"

#include <QSet>

namespace {

const QString latinLetters = QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
const QString cyrillicLetters = QString::fromUtf8(
    "абвгдежзийклмнопрстуфхцчшщъыьэюяАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЭЮЯё");

QChar pick(QRandomGenerator &random, const QString &from)
{
    return from.at(random.bounded(from.size()));
}

const QString &pick(QRandomGenerator &random, const QStringList &from)
{
    return from.at(random.bounded(from.size()));
}

bool chance(QRandomGenerator &random, int percent)
{
    return random.bounded(100) < percent;
}

QString word(QRandomGenerator &random, const QString &letters, int minLength, int maxLength)
{
    QString result;
    const int length = minLength + random.bounded(maxLength - minLength + 1);
    for (int i = 0; i < length; ++i)
        result += pick(random, letters);
    return result;
}

QString identifier(QRandomGenerator &random)
{
    QString result = word(random, latinLetters.left(26), 1, 6);
    if (chance(random, 15))
        result += QString::number(random.bounded(10));
    return result;
}

QString cyrillicWord(QRandomGenerator &random)
{
    return word(random, cyrillicLetters, 2, 7);
}

// Adds the name unless it is already there; returns whether it was added.
bool addUnique(QStringList &names, QSet<QString> &seen, const QString &name)
{
    if (seen.contains(name))
        return false;
    seen.insert(name);
    names.append(name);
    return true;
}

const QStringList symbolicNames = {
    QStringLiteral(":="), QStringLiteral("<>"), QStringLiteral("=="), QStringLiteral("<="),
    QStringLiteral(">="), QStringLiteral("/="), QStringLiteral("&&"), QStringLiteral("||"),
    QStringLiteral("->"), QStringLiteral("<<"), QStringLiteral(">>"), QStringLiteral("%"),
    QStringLiteral("~"), QStringLiteral("'"), QStringLiteral("&"), QStringLiteral("/"),
    QStringLiteral("="), QStringLiteral("!="), QStringLiteral("+="), QStringLiteral("::"),
    QStringLiteral("#"), QStringLiteral("@"), QStringLiteral("!"), QStringLiteral("<-"),
    QStringLiteral("=>"), QStringLiteral("mod%"), QStringLiteral("'s"), QStringLiteral("~x"),
};

const QStringList patternNames = {
    QStringLiteral("a.b"), QStringLiteral("x+"), QStringLiteral("[y]"), QStringLiteral("(z)"),
    QStringLiteral("p|q"), QStringLiteral("m*"), QStringLiteral("k?"), QStringLiteral("t.x"),
    QStringLiteral("q\\.r"), QStringLiteral("[a-c]x"), QStringLiteral("r[0-9]"), QStringLiteral("(v)_"),
};

const QStringList numbers = {
    QStringLiteral("12"), QStringLiteral("-3.5"), QStringLiteral(".5e-3"), QStringLiteral("1e10"),
    QStringLiteral("x1"), QStringLiteral("3."), QStringLiteral("+7"), QStringLiteral("0.25E+4"),
    QStringLiteral("1e"), QStringLiteral("5.e3"), QStringLiteral("-.5"), QStringLiteral("007"),
    QStringLiteral("2.5.6"), QStringLiteral("1e-"), QStringLiteral("a-3"), QStringLiteral("9z"),
};

const QStringList separators = {
    QStringLiteral(" "), QStringLiteral(" "), QStringLiteral(" "), QString(), QStringLiteral("("),
    QStringLiteral(")"), QStringLiteral(", "), QStringLiteral("; "), QStringLiteral("."),
    QStringLiteral(" + "), QStringLiteral("-"), QStringLiteral("*"), QStringLiteral(" := "),
    QStringLiteral("="), QStringLiteral("<"), QStringLiteral(">"), QStringLiteral("{"),
    QStringLiteral("}"), QStringLiteral("_"), QStringLiteral("["), QStringLiteral("]"),
};

class LineMaker
{
public:
    LineMaker(QRandomGenerator &random, const QStringList &operations, const QStringList &types)
        : random(random), operations(operations), types(types)
    {
    }

    QString line()
    {
        const QString indent(random.bounded(4) * 4, QLatin1Char(' '));
        switch (random.bounded(20)) {
        case 0: case 1: case 2:
            return indent + typeName() + QLatin1Char(' ') + token() + QStringLiteral(" = ")
                + expression() + QLatin1Char(';');
        case 3: case 4: case 5: case 6:
            return indent + token() + QStringLiteral(" := ") + expression();
        case 7: case 8: case 9:
            return indent + operationName() + QLatin1Char('(') + expression()
                + QStringLiteral(", ") + token() + QLatin1Char(')');
        case 10: case 11:
            return indent + token() + QStringLiteral(" := ") + string() + QStringLiteral(" + ")
                + (chance(random, 50) ? token() + QStringLiteral(" + ") : QString()) + string();
        case 12: case 13:
            return indent + expression() + QStringLiteral(" ``") + expression();
        case 14:
            if (chance(random, 20))
                return indent + QLatin1Char('`');
            return indent + expression() + QStringLiteral(" `") + token() + QStringLiteral("` ")
                + expression();
        case 15:
            switch (random.bounded(4)) {
            case 0: return indent + QStringLiteral("if (") + expression() + QStringLiteral(") {");
            case 1: return indent + QLatin1Char('}');
            case 2: return indent + QStringLiteral("{ ") + token() + QStringLiteral(" }");
            default: return indent + QStringLiteral("f(x){y}") + token();
            }
        case 16:
            return chance(random, 50) ? QString() : indent;
        default:
            return indent + expression();
        }
    }

private:
    QString operationName()
    {
        return operations.isEmpty() ? identifier(random) : pick(random, operations);
    }

    QString typeName()
    {
        return types.isEmpty() ? identifier(random) : pick(random, types);
    }

    QString string()
    {
        QString inside;
        const int count = random.bounded(4);
        for (int i = 0; i < count; ++i)
            inside += token() + (chance(random, 10) ? QStringLiteral("`") : QStringLiteral(" "));
        return QLatin1Char('"') + inside + QLatin1Char('"');
    }

    QString token()
    {
        const int kind = random.bounded(100);
        if (kind < 35)
            return operationName();
        if (kind < 50)
            return typeName();
        if (kind < 58)
            return identifier(random);
        if (kind < 66)
            return pick(random, numbers);
        if (kind < 70)
            return QString::number(random.bounded(100000)) + (chance(random, 30)
                ? QStringLiteral(".") + QString::number(random.bounded(100)) : QString());
        if (kind < 75)
            return cyrillicWord(random);
        if (kind < 82) // a name inside a longer word
            return (chance(random, 50) ? identifier(random) : QString())
                + (chance(random, 60) ? operationName() : typeName())
                + (chance(random, 60) ? identifier(random) : QString::number(random.bounded(10)));
        if (kind < 87) // two names run together
            return operationName() + typeName();
        if (kind < 90)
            return string();
        if (kind < 92)
            return QStringLiteral("``");
        return operationName() + pick(random, separators) + operationName();
    }

    QString expression()
    {
        QString result = token();
        const int count = random.bounded(7);
        for (int i = 0; i < count; ++i)
            result += pick(random, separators) + token();
        return result;
    }

    QRandomGenerator &random;
    const QStringList &operations;
    const QStringList &types;
};

} // namespace

QStringList makeZuLines(QRandomGenerator &random, int count, const QStringList &operations,
                        const QStringList &types)
{
    LineMaker maker(random, operations, types);
    QStringList lines;
    lines.reserve(count);
    for (int i = 0; i < count; ++i)
        lines.append(maker.line());
    return lines;
}

QStringList makeZuLinesFilling(QRandomGenerator &random, int length, const QStringList &operations,
                               const QStringList &types)
{
    LineMaker maker(random, operations, types);
    QStringList lines;
    for (int size = 0; size < length; size += lines.last().size() + 1)
        lines.append(maker.line());
    return lines;
}

ZuSample makeZuSample(quint32 seed, int lineCount, int operationCount, int typeCount)
{
    QRandomGenerator random(seed);
    ZuSample sample;

    QSet<QString> seen;
    for (const QString &name : symbolicNames)
        addUnique(sample.operations, seen, name);
    for (const QString &name : patternNames)
        addUnique(sample.operations, seen, name);
    const int duplicates = operationCount / 50;
    while (sample.operations.size() < operationCount - duplicates) {
        const int kind = random.bounded(100);
        QString name;
        if (kind < 70)
            name = identifier(random);
        else if (kind < 80)
            name = cyrillicWord(random);
        else if (kind < 88)
            name = identifier(random) + QLatin1Char('_') + identifier(random);
        else if (kind < 91)
            name = QStringLiteral("get_") + identifier(random);
        else if (kind < 93)
            name = cyrillicWord(random) + QLatin1Char('_') + cyrillicWord(random);
        else if (kind < 95)
            name = QLatin1Char('_') + identifier(random);
        else if (kind < 97)
            name = identifier(random) + QLatin1Char('=');
        else
            name = identifier(random) + QLatin1Char('-') + identifier(random);
        addUnique(sample.operations, seen, name);
    }
    while (sample.operations.size() < operationCount) // a few names twice
        sample.operations.append(pick(random, sample.operations));

    QSet<QString> typesSeen;
    const int shared = typeCount / 30;
    // A few operation names are types as well, some with operator characters.
    addUnique(sample.types, typesSeen, QStringLiteral(":="));
    addUnique(sample.types, typesSeen, QStringLiteral("a.b"));
    addUnique(sample.types, typesSeen, QStringLiteral("m*"));
    for (const QString &name : sample.operations) {
        if (name.contains(QLatin1Char('_')) && addUnique(sample.types, typesSeen, name))
            break;
    }
    while (sample.types.size() < shared)
        addUnique(sample.types, typesSeen, sample.operations.at(random.bounded(100, operationCount)));
    while (sample.types.size() < typeCount) {
        const int kind = random.bounded(100);
        QString name;
        if (kind < 75)
            name = word(random, latinLetters.mid(26), 1, 1) + identifier(random);
        else if (kind < 85)
            name = identifier(random);
        else if (kind < 95)
            name = cyrillicWord(random);
        else
            name = identifier(random) + QLatin1Char('_') + identifier(random);
        addUnique(sample.types, typesSeen, name);
    }

    sample.lines = makeZuLines(random, lineCount, sample.operations, sample.types);
    return sample;
}
