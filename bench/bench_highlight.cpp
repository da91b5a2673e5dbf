// Lines per second of the editor's highlighter and of the rule-by-rule
// reference on the same generated program: 10,000 lines, 1,000 operation
// and 300 type names; then the whole document with 50, 200 and 1,000
// operation names (and 15, 60 and 300 type names).
//
//   QT_QPA_PLATFORM=offscreen bench_highlight [repetitions]
//
// Each figure is the best of several runs:
// - "whole document": QSyntaxHighlighter::rehighlight() on a freshly loaded
//   document, so every line gets new formats;
// - "per line": rehighlightBlock() on each line of a document already
//   highlighted, as when lines are edited one at a time; the framework lays
//   out again every line whose formats it sets, which costs both alike;
// - "matching only": highlightBlock() called on each line's text outside the
//   framework, where setFormat() records nothing: the highlighter's own cost.
// A highlighter that colours one character per line shows what the
// framework costs alone.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextDocumentLayout>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>

#include "highlightcomparison.h"
#include "referencesyntaxer.h"
#include "syntaxer.h"
#include "zusamples.h"

namespace {

std::unique_ptr<QTextDocument> plainDocument(const QString &text)
{
    auto document = std::make_unique<QTextDocument>();
    document->setDocumentLayout(new QPlainTextDocumentLayout(document.get()));
    document->setPlainText(text);
    return document;
}

// The best of `repetitions` runs, in seconds; `prepare` is not timed.
double best(int repetitions, const std::function<void()> &prepare, const std::function<void()> &run)
{
    double fastest = std::numeric_limits<double>::max();
    for (int i = 0; i < repetitions; ++i) {
        prepare();
        QElapsedTimer timer;
        timer.start();
        run();
        fastest = qMin(fastest, timer.nsecsElapsed() / 1e9);
    }
    return fastest;
}

// The highlighters with highlightBlock() callable from here.
class ExposedSyntaxer : public Syntaxer
{
public:
    using Syntaxer::Syntaxer;
    using Syntaxer::highlightBlock;
};

class ExposedReference : public ReferenceSyntaxer
{
public:
    using ReferenceSyntaxer::ReferenceSyntaxer;
    using ReferenceSyntaxer::highlightBlock;
};

// Next to no work of its own: what the framework costs alone, including the
// relayout of every line whose formats are set again.
class FirstCharacter : public QSyntaxHighlighter
{
public:
    FirstCharacter() : QSyntaxHighlighter(static_cast<QObject *>(nullptr))
    {
        format.setForeground(QBrush(Qt::red));
    }
    void highlightBlock(const QString &) override
    {
        setFormat(0, 1, format);
        setCurrentBlockState(0);
    }

private:
    QTextCharFormat format;
};

struct Result
{
    double wholeDocument = 0;
    double perLine = 0;
    double matching = 0;
    int coloured = 0;
};

template<typename Highlighter>
Result measure(Highlighter *highlighter, const QStringList &lines, const QString &text,
               int repetitions)
{
    Result result;
    result.matching = best(
        repetitions, [] {},
        [&] {
            for (const QString &line : lines)
                highlighter->highlightBlock(line);
        });

    std::unique_ptr<QTextDocument> document;
    result.wholeDocument = best(
        repetitions,
        [&] {
            highlighter->setDocument(nullptr);
            document = plainDocument(text);
            highlighter->setDocument(document.get());
        },
        [&] { highlighter->rehighlight(); });
    result.coloured = colouredLines(document.get());

    result.perLine = best(
        repetitions, [] {},
        [&] {
            for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
                highlighter->rehighlightBlock(block);
        });
    highlighter->setDocument(nullptr);
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const int repetitions = argc > 1 ? qMax(1, QString::fromLocal8Bit(argv[1]).toInt()) : 3;

    const ZuSample sample = makeZuSample(12345);
    const QString text = sample.text();
    const int lines = sample.lines.size();

    ExposedSyntaxer syntaxer(nullptr, sample.operations, sample.types);
    ExposedReference reference(nullptr, sample.operations, sample.types);
    FirstCharacter firstCharacter;

    std::printf("%d lines, %d operation and %d type names, %d rules; best of %d runs\n", lines,
                int(sample.operations.size()), int(sample.types.size()),
                int(syntaxer.highRules().size()), repetitions);

    const Result fast = measure(&syntaxer, sample.lines, text, repetitions);
    const Result slow = measure(&reference, sample.lines, text, repetitions);
    const Result framework = measure(&firstCharacter, sample.lines, text, repetitions);
    if (fast.coloured != slow.coloured || fast.coloured == 0) {
        std::fprintf(stderr, "coloured lines differ: %d and %d\n", fast.coloured, slow.coloured);
        return 1;
    }

    const int blocks = lines + 1; // the text ends with a line feed
    auto report = [&](const char *what, int count, double fastSeconds, double slowSeconds,
                      double frameworkSeconds) {
        std::printf("%-15s Syntaxer %9.0f lines/s (%7.2f ms)   reference %7.0f lines/s (%8.2f ms)"
                    "   ratio %6.1fx",
                    what, count / fastSeconds, fastSeconds * 1e3, count / slowSeconds,
                    slowSeconds * 1e3, slowSeconds / fastSeconds);
        if (frameworkSeconds > 0)
            std::printf("   (framework alone: %.2f ms)", frameworkSeconds * 1e3);
        std::printf("\n");
    };
    report("whole document", blocks, fast.wholeDocument, slow.wholeDocument, framework.wholeDocument);
    report("per line", blocks, fast.perLine, slow.perLine, framework.perLine);
    report("matching only", lines, fast.matching, slow.matching, 0);

    // Where the time goes: the highlighters' own cost with parts of the lists.
    auto plain = [](const QStringList &names) {
        const QString patternCharacters = QStringLiteral("\\^$.|?*+()[]{}");
        QStringList result;
        for (const QString &name : names) {
            if (std::none_of(name.begin(), name.end(),
                             [&](QChar ch) { return patternCharacters.contains(ch); }))
                result << name;
        }
        return result;
    };
    const QStringList wide = { QStringLiteral("."), QStringLiteral("\\w+"), QStringLiteral("\\d") };
    struct Lists { const char *what; QStringList operations; QStringList types; };
    const QVector<Lists> parts = {
        { "no names", {}, {} },
        { "plain names", plain(sample.operations), plain(sample.types) },
        { "all names", sample.operations, sample.types },
        { "all + . \\w+ \\d", sample.operations + wide, sample.types },
    };
    std::printf("matching only, by name lists:\n");
    for (const Lists &part : parts) {
        ExposedSyntaxer partSyntaxer(nullptr, part.operations, part.types);
        ExposedReference partReference(nullptr, part.operations, part.types);
        const double fastSeconds = best(repetitions, [] {}, [&] {
            for (const QString &line : sample.lines)
                partSyntaxer.highlightBlock(line);
        });
        const double slowSeconds = best(repetitions, [] {}, [&] {
            for (const QString &line : sample.lines)
                partReference.highlightBlock(line);
        });
        std::printf("  %-18s %4d rules: Syntaxer %6.2f us/line   reference %7.2f us/line   ratio %6.1fx\n",
                    part.what, int(partSyntaxer.highRules().size()), fastSeconds * 1e6 / lines,
                    slowSeconds * 1e6 / lines, slowSeconds / fastSeconds);
    }

    // The whole document as the host's lists grow; the part of it that is
    // not matching is the framework's: the formats set on each line and the
    // relayout of every line whose formats change.
    std::printf("whole document, by the size of the lists (framework alone: %.2f ms):\n",
                framework.wholeDocument * 1e3);
    for (int names : { 50, 200, 1000 }) {
        const ZuSample sized = makeZuSample(12345, 10000, names, names * 3 / 10);
        ExposedSyntaxer sizedSyntaxer(nullptr, sized.operations, sized.types);
        ExposedReference sizedReference(nullptr, sized.operations, sized.types);
        const Result sizedFast = measure(&sizedSyntaxer, sized.lines, sized.text(), repetitions);
        const Result sizedSlow = measure(&sizedReference, sized.lines, sized.text(), repetitions);
        std::printf("  %4d/%3d names: Syntaxer %6.2f ms (matching %6.2f ms, the rest %6.2f ms)"
                    "   reference %8.2f ms   ratio %5.1fx\n",
                    int(sized.operations.size()), int(sized.types.size()), sizedFast.wholeDocument * 1e3,
                    sizedFast.matching * 1e3, (sizedFast.wholeDocument - sizedFast.matching) * 1e3,
                    sizedSlow.wholeDocument * 1e3, sizedSlow.wholeDocument / sizedFast.wholeDocument);
    }

    const double ratio = slow.wholeDocument / fast.wholeDocument;
    std::printf("goal: at least 30x the reference through the whole document: %s (%.1fx)\n",
                ratio >= 30 ? "met" : "NOT met", ratio);
    return 0;
}
