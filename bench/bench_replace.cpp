// Replace all in one large program, through the search panel of the
// editor's window: a generated program of 5 MiB with the names of
// examples/vocabulary holds 100,000 occurrences of a word, and Replace all
// puts a longer word in their place.
//
//   QT_QPA_PLATFORM=offscreen bench_replace [occurrences [megabytes]]
//
// The time runs from the click on "Replace all" to the box that reports the
// count: the search, the replacements, and laying out and colouring the
// changed text anew. It is given in all and per 10,000 replacements, once
// with the panel's default options and once with ignore case and whole
// words, and beside it the floor: the same replacements made by one
// QString::replace on the program's text (which knows no whole words).
// Then one Ctrl+Z, timed up to its return, takes the replacements back.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QtTest>

#include <cstdio>

#include "benchsupport.h"
#include "benchwindow.h"
#include "boxanswerer.h"
#include "editwindow.h"
#include "searchreplace.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

const QString sought = QStringLiteral("итог");
const QString replacement = QStringLiteral("сумма");

// Generated program lines up to the length, the word added at the ends of
// lines spread evenly over the program; empty when the lines hold the word
// already.
QString program(int length, int occurrences, const QStringList &operations, const QStringList &types)
{
    QRandomGenerator random(2024);
    QStringList lines = makeZuLinesFilling(random, length - occurrences * (sought.size() + 1), operations, types);
    if (lines.join(QLatin1Char('\n')).contains(sought, Qt::CaseInsensitive))
        return QString();
    for (int i = 0; i < occurrences; ++i)
        lines[int(qint64(i) * lines.size() / occurrences)] += QLatin1Char(' ') + sought;
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

// When the first message box is shown.
class BoxClock : public QObject
{
public:
    explicit BoxClock(const QElapsedTimer &timer)
        : timer(timer)
    {
        qApp->installEventFilter(this);
    }
    ~BoxClock() override { qApp->removeEventFilter(this); }

    double shownAt = -1; // seconds

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (shownAt < 0 && event->type() == QEvent::Show && qobject_cast<QMessageBox *>(watched))
            shownAt = timer.nsecsElapsed() / 1e9;
        return false;
    }

private:
    const QElapsedTimer &timer;
};

struct Figures
{
    double toBox = -1;
    double undo = -1;
    QString box;
    bool undone = false;
};

Figures replaceAll(BenchWindow &bench, const QString &name, const QString &text, bool ignoreCase,
                   bool wholeWords)
{
    Figures figures;
    ZuSourceCode *editor = bench.openProgram(name);
    if (!editor)
        return figures;
    SearchReplace *panel = bench.editWindow()->searchPanel();
    panel->show();
    if (!QTest::qWaitForWindowExposed(panel))
        return figures;
    panel->searchFor()->setEditText(sought);
    panel->replaceTo()->setEditText(replacement);
    panel->ignorecase()->setChecked(ignoreCase);
    panel->wholeword()->setChecked(wholeWords);
    settle();

    BoxAnswerer boxes(QMessageBox::Ok, BoxAnswerer::RecordWhenShown);
    QElapsedTimer timer;
    BoxClock clock(timer);
    timer.start();
    QTest::mouseClick(panel->replaceAll(), Qt::LeftButton);
    figures.toBox = clock.shownAt;
    figures.box = boxes.texts().value(0);
    settle();

    timer.start();
    QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
    figures.undo = timer.nsecsElapsed() / 1e9;
    figures.undone = editor->toPlainText() == text;
    settle();
    return figures;
}

double floorSeconds(const QString &text, Qt::CaseSensitivity cs, int *count)
{
    QString copy = text;
    copy.detach();
    QElapsedTimer timer;
    timer.start();
    copy.replace(sought, replacement, cs);
    const double seconds = timer.nsecsElapsed() / 1e9;
    *count = (copy.size() - text.size()) / (replacement.size() - sought.size());
    return seconds;
}

void report(const char *what, const Figures &figures, int occurrences, double floor)
{
    std::printf("%-32s to the count box %6.3f s (%6.2f ms per 10,000)   floor %6.3f s (%5.2f ms per 10,000)\n",
                what, figures.toBox, figures.toBox * 1e4 / occurrences * 1e3, floor,
                floor * 1e4 / occurrences * 1e3);
    std::printf("%-32s box \"%s\"; one Ctrl+Z %6.3f s, text %s\n", "", qPrintable(figures.box), figures.undo,
                figures.undone ? "restored" : "NOT restored");
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setCursorFlashTime(0);
    const int occurrences = argc > 1 ? qMax(1, QString::fromLocal8Bit(argv[1]).toInt()) : 100000;
    const int megabytes = argc > 2 ? qMax(1, QString::fromLocal8Bit(argv[2]).toInt()) : 5;

    BenchWindow bench;
    if (!bench.makeWithExampleVocabulary())
        return 1;
    const QString text = program(megabytes * 1024 * 1024, occurrences, bench.editWindow()->operationNames(),
                                 bench.editWindow()->typeNames());
    if (text.isEmpty() || !bench.writeProgram(QStringLiteral("plain"), text)
        || !bench.writeProgram(QStringLiteral("options"), text)) {
        std::fprintf(stderr, "cannot write the program\n");
        return 1;
    }
    std::printf("%d characters in %d lines, %d occurrences of \"%s\" replaced with \"%s\"\n", int(text.size()),
                int(text.count(QLatin1Char('\n'))), occurrences, qPrintable(sought), qPrintable(replacement));

    int floorCount = 0;
    const double plainFloor = floorSeconds(text, Qt::CaseSensitive, &floorCount);
    const Figures plain = replaceAll(bench, QStringLiteral("plain"), text, false, false);
    report("default options", plain, floorCount, plainFloor);
    const double optionsFloor = floorSeconds(text, Qt::CaseInsensitive, &floorCount);
    const Figures options = replaceAll(bench, QStringLiteral("options"), text, true, true);
    report("ignore case, whole words", options, floorCount, optionsFloor);

    const bool met = plain.toBox >= 0 && plain.toBox < 2 && options.toBox >= 0 && options.toBox < 2;
    std::printf("goal: under 2 s to the count box: %s; peak resident memory %.0f MiB\n", met ? "met" : "NOT met",
                peakResidentMiB());
    return 0;
}
