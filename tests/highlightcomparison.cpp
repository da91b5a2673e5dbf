#include "highlightcomparison.h"

#include "referencesyntaxer.h"
#include "syntaxer.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QStringList>
#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextDocument>
#include <QTextLayout>
#include <QVector>

namespace {

// The formats of a block's characters, one per character.
QVector<QTextCharFormat> characterFormats(const QTextBlock &block)
{
    QVector<QTextCharFormat> formats(qMax(0, block.length() - 1));
    const QVector<QTextLayout::FormatRange> ranges = block.layout()->formats();
    for (const QTextLayout::FormatRange &range : ranges) {
        for (int i = qMax(0, range.start); i < range.start + range.length && i < formats.size(); ++i)
            formats[i] = range.format;
    }
    return formats;
}

QChar colourLetter(const QTextCharFormat &format)
{
    if (format.properties().isEmpty())
        return QLatin1Char('.');
    if (format.properties().size() != 2 || !format.hasProperty(QTextFormat::ForegroundBrush)
        || !format.hasProperty(QTextFormat::FontWeight)
        || format.foreground().style() != Qt::SolidPattern)
        return QLatin1Char('?');
    const QRgb rgb = format.foreground().color().rgba();
    const int weight = format.intProperty(QTextFormat::FontWeight);
    if (rgb == QColor(Qt::red).rgba() && weight == QFont::Bold)
        return QLatin1Char('R');
    if (rgb == QColor(Qt::blue).rgba() && weight == QFont::Normal)
        return QLatin1Char('B');
    if (rgb == QColor(Qt::darkGreen).rgba() && weight == QFont::Normal)
        return QLatin1Char('G');
    if (rgb == QColor(Qt::magenta).rgba() && weight == QFont::Bold)
        return QLatin1Char('M');
    if (rgb == QColor(Qt::gray).rgba() && weight == QFont::Normal)
        return QLatin1Char('C');
    return QLatin1Char('?');
}

QString describeFormat(const QTextCharFormat &format)
{
    QString result = format.foreground().color().name() + QStringLiteral(" w")
        + QString::number(format.fontWeight());
    if (format.properties().size() != 2)
        result += QStringLiteral(" props=") + QString::number(format.properties().size());
    return result;
}

QString describeRanges(const QVector<QTextLayout::FormatRange> &ranges)
{
    QStringList parts;
    for (const QTextLayout::FormatRange &range : ranges) {
        parts << QStringLiteral("[%1+%2 %3]").arg(range.start).arg(range.length)
                     .arg(describeFormat(range.format));
    }
    return parts.isEmpty() ? QStringLiteral("(none)") : parts.join(QLatin1Char(' '));
}

bool sameRanges(const QVector<QTextLayout::FormatRange> &a, const QVector<QTextLayout::FormatRange> &b)
{
    if (a.size() != b.size())
        return false;
    for (int i = 0; i < a.size(); ++i) {
        if (a.at(i).start != b.at(i).start || a.at(i).length != b.at(i).length
            || a.at(i).format != b.at(i).format)
            return false;
    }
    return true;
}

} // namespace

QString colourMap(const QTextBlock &block)
{
    QString map;
    const QVector<QTextCharFormat> formats = characterFormats(block);
    for (const QTextCharFormat &format : formats)
        map += colourLetter(format);
    return map;
}

QString firstDifference(const QTextDocument *actual, const QTextDocument *expected)
{
    if (actual->blockCount() != expected->blockCount()) {
        return QStringLiteral("block counts differ: %1 and %2")
            .arg(actual->blockCount()).arg(expected->blockCount());
    }
    QString first;
    int differing = 0;
    QTextBlock a = actual->begin();
    QTextBlock e = expected->begin();
    for (; a.isValid() && e.isValid(); a = a.next(), e = e.next()) {
        const QVector<QTextLayout::FormatRange> actualRanges = a.layout()->formats();
        const QVector<QTextLayout::FormatRange> expectedRanges = e.layout()->formats();
        if (a.text() == e.text() && a.userState() == e.userState()
            && sameRanges(actualRanges, expectedRanges))
            continue;
        ++differing;
        if (first.isEmpty()) {
            first = QStringLiteral("line %1: \"%2\"\n  highlighter (state %3): %4\n"
                                   "  reference   (state %5): %6\n  colours: %7\n  expected: %8")
                        .arg(a.blockNumber() + 1).arg(a.text())
                        .arg(a.userState()).arg(describeRanges(actualRanges))
                        .arg(e.userState()).arg(describeRanges(expectedRanges))
                        .arg(colourMap(a), colourMap(e));
            if (a.text() != e.text())
                first += QStringLiteral("\n  reference text: \"%1\"").arg(e.text());
        }
    }
    if (differing == 0)
        return QString();
    return QStringLiteral("%1 line(s) differ from the reference; the first is %2").arg(differing).arg(first);
}

QString differenceFromReference(const QStringList &lines, const QStringList &operations,
                                const QStringList &types)
{
    const QString text = lines.join(QLatin1Char('\n'));
    QTextDocument actual;
    actual.setPlainText(text);
    Syntaxer syntaxer(&actual, operations, types);
    syntaxer.rehighlight();
    QTextDocument expected;
    expected.setPlainText(text);
    ReferenceSyntaxer reference(&expected, operations, types);
    reference.rehighlight();

    const QString difference = firstDifference(&actual, &expected);
    if (difference.isEmpty())
        return difference;
    auto quoted = [](const QStringList &names) {
        QStringList parts;
        for (const QString &name : names)
            parts << QLatin1Char('"') + name + QLatin1Char('"');
        return QLatin1Char('{') + parts.join(QStringLiteral(", ")) + QLatin1Char('}');
    };
    return QStringLiteral("operations %1, types %2: %3").arg(quoted(operations), quoted(types), difference);
}

int colouredLines(const QTextDocument *document)
{
    int lines = 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        if (!block.layout()->formats().isEmpty())
            ++lines;
    }
    return lines;
}
