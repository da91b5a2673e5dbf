// The time of a keystroke in the middle of a program that is one line of
// 10 MiB: in the editor as the window sets it up (highlighter, line
// numbers, completer), against plain QPlainTextEdits holding the same text.
//
//   QT_QPA_PLATFORM=offscreen bench_longline [keystrokes [characters]]
//
// A keystroke is QTest::keyClick() of a letter followed by the event loop
// until what it caused is done, the repaint included; the figures are the
// median and the slowest of them. The load time runs from handing over the
// text (for the editor: opening the program's tab) to the first repaint.
// The line is made of generated program lines with the names of
// examples/vocabulary, joined by blanks; lines with a comment to the line's
// end are left out, as they would turn the rest of the program into one.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QRandomGenerator>
#include <QTextBlock>
#include <QTextLayout>
#include <QtTest>

#include <algorithm>
#include <cstdio>
#include <functional>

#include "benchsupport.h"
#include "benchwindow.h"
#include "editwindow.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

QString longLine(int length, const QStringList &operations, const QStringList &types)
{
    QRandomGenerator random(2024);
    QStringList lines = makeZuLines(random, 1000, operations, types);
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const QString &line) { return line.contains(QLatin1String("``")); }),
                lines.end());
    const QString piece = lines.join(QLatin1Char(' ')) + QLatin1Char(' ');
    return piece.repeated(length / piece.size() + 1).left(length);
}

struct Figures
{
    double loadSeconds = 0;
    QVector<double> keystrokeSeconds;
};

// Loads the text with `load`, which returns the editor once it shows the
// text, then types letters in the middle of the line, the editor having the
// keyboard focus as when a user types.
Figures measure(const std::function<QPlainTextEdit *()> &load, int keystrokes)
{
    Figures figures;
    QElapsedTimer timer;
    timer.start();
    QPlainTextEdit *editor = load();
    if (!editor)
        return figures;
    settle();
    figures.loadSeconds = timer.nsecsElapsed() / 1e9;

    editor->activateWindow();
    editor->setFocus();
    if (!QTest::qWaitForWindowActive(editor->window()) || !editor->hasFocus())
        return Figures();
    QTextCursor cursor = editor->textCursor();
    cursor.setPosition(editor->document()->characterCount() / 2);
    editor->setTextCursor(cursor);
    settle();
    for (int i = 0; i < keystrokes; ++i) {
        timer.start();
        QTest::keyClick(editor, char('a' + i % 26));
        settle();
        figures.keystrokeSeconds << timer.nsecsElapsed() / 1e9;
    }
    return figures;
}

void report(const char *what, const Figures &figures)
{
    if (figures.keystrokeSeconds.isEmpty()) {
        std::printf("%-46s could not be shown with the keyboard focus\n", what);
        return;
    }
    std::printf("%-46s load %7.2f s   keystroke median %9.2f ms   max %9.2f ms\n", what,
                figures.loadSeconds, median(figures.keystrokeSeconds) * 1e3,
                maximum(figures.keystrokeSeconds) * 1e3);
}

// A plain editor of the window editor's size on its own, given the text.
Figures measurePlain(const QString &text, const QSize &size, const QFont *font, int keystrokes)
{
    QPlainTextEdit plain;
    plain.resize(size);
    if (font) {
        plain.setFont(*font);
        plain.setWordWrapMode(QTextOption::NoWrap);
    }
    return measure([&]() -> QPlainTextEdit * {
        plain.setPlainText(text);
        plain.show();
        return QTest::qWaitForWindowExposed(&plain) ? &plain : nullptr;
    }, keystrokes);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // A steady cursor: a blink would repaint the line in the middle of
    // whichever keystroke it falls into.
    QApplication::setCursorFlashTime(0);
    const int keystrokes = argc > 1 ? qMax(1, QString::fromLocal8Bit(argv[1]).toInt()) : 20;
    const int length = argc > 2 ? qMax(2, QString::fromLocal8Bit(argv[2]).toInt()) : 10 * 1024 * 1024;

    BenchWindow bench;
    if (!bench.makeWithExampleVocabulary())
        return 1;
    const QString text = longLine(length, bench.editWindow()->operationNames(), bench.editWindow()->typeNames());
    const QString name = QStringLiteral("longline");
    if (!bench.writeProgram(name, text)) {
        std::fprintf(stderr, "cannot write the program\n");
        return 1;
    }
    std::printf("one line of %d characters, %d names; %d keystrokes in its middle\n", length,
                int(bench.editWindow()->operationNames().size() + bench.editWindow()->typeNames().size()),
                keystrokes);

    ZuSourceCode *editor = nullptr;
    const Figures inWindow = measure([&]() -> QPlainTextEdit * {
        editor = bench.openProgram(name);
        return editor;
    }, keystrokes);
    // The editor shows the line in pieces, one block each.
    if (!editor || editor->document()->characterCount() - editor->blockCount() != length + keystrokes) {
        std::fprintf(stderr, "the editor does not hold the line and the keystrokes\n");
        return 1;
    }
    const QTextBlock edited = editor->textCursor().block();
    const int colouredRanges = edited.layout()->formats().size();
    const int pieces = editor->blockCount();
    const QSize size = editor->size();
    const QFont font = editor->font();

    report("ZuSourceCode in the window", inWindow);
    report("plain QPlainTextEdit, editor's font, no wrap", measurePlain(text, size, &font, keystrokes));
    report("plain QPlainTextEdit, as constructed", measurePlain(text, size, nullptr, keystrokes));
    std::printf("the editor shows the line in %d pieces; format ranges on the edited piece: %d; "
                "peak resident memory %.0f MiB\n",
                pieces, colouredRanges, peakResidentMiB());
    return 0;
}
