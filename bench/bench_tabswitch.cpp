// Switching between the tabs of two large programs: two generated programs
// of 5 MiB each with the names of examples/vocabulary, open in the editor's
// window with the lines in view coloured, and the current tab switched back
// and forth.
//
//   QT_QPA_PLATFORM=offscreen bench_tabswitch [switches [megabytes]]
//
// Each switch is timed from the change of the current tab up to its
// repaint. The floor is the same switch between two plain QPlainTextEdits
// in a QTabWidget, holding the same texts in the editor's font without
// wrapping. Beside it the memory: how much the resident memory grew with
// the two programs open in the window, and with the two plain editors, and
// again once every line of both has been shown, a page at a time. Each side
// runs in a process of its own (the program runs itself with --window or
// --plain), so that neither finds the other's memory.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextLayout>
#include <QtTest>

#include <cstdio>

#include "benchsupport.h"
#include "benchwindow.h"
#include "editwindow.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

struct Figures
{
    QVector<double> switchSeconds;
    double grownMiB = -1;
    double pagedMiB = -1;
};

// Generated program lines up to the length; the seed tells the two
// programs apart.
QString program(quint32 seed, int length, const QStringList &operations, const QStringList &types)
{
    QRandomGenerator random(seed);
    return makeZuLinesFilling(random, length, operations, types).join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QVector<double> switchTabs(QTabWidget *tabs, int switches)
{
    QVector<double> seconds;
    QElapsedTimer timer;
    for (int i = 0; i < switches; ++i) {
        timer.start();
        tabs->setCurrentIndex(1 - tabs->currentIndex());
        settle();
        seconds << timer.nsecsElapsed() / 1e9;
    }
    return seconds;
}

// Shows every line of every tab's program, a page at a time, each page
// painted: the window's editor colours each line as it comes into view.
void pageThrough(QTabWidget *tabs)
{
    for (int index = 0; index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        QWidget *page = tabs->widget(index);
        auto *editor = qobject_cast<QPlainTextEdit *>(page);
        if (!editor)
            editor = page->findChild<QPlainTextEdit *>();
        QScrollBar *scrollBar = editor->verticalScrollBar();
        for (int value = 0; value <= scrollBar->maximum(); value += scrollBar->pageStep()) {
            scrollBar->setValue(value);
            settle();
        }
    }
}

int colouredLines(const QTextDocument *document)
{
    int coloured = 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        coloured += !block.layout()->formats().isEmpty();
    return coloured;
}

void report(const char *what, const Figures &figures)
{
    std::printf("%-40s switch median %8.2f ms   max %8.2f ms   resident grew %6.1f MiB\n", what,
                median(figures.switchSeconds) * 1e3, maximum(figures.switchSeconds) * 1e3, figures.grownMiB);
    std::printf("%-40s every line shown once: resident %6.1f MiB over before\n", "", figures.pagedMiB);
}

int runWindow(int switches, int length)
{
    BenchWindow bench;
    if (!bench.makeWithExampleVocabulary())
        return 1;
    const QStringList &operations = bench.editWindow()->operationNames();
    const QStringList &types = bench.editWindow()->typeNames();
    const QStringList names { QStringLiteral("first"), QStringLiteral("second") };
    for (quint32 seed = 0; seed < 2; ++seed) {
        if (!bench.writeProgram(names.at(seed), program(seed, length, operations, types))) {
            std::fprintf(stderr, "cannot write the programs\n");
            return 1;
        }
    }

    Figures figures;
    const double before = residentMiB();
    QList<ZuSourceCode *> editors;
    for (const QString &name : names)
        editors << bench.openProgram(name);
    if (editors.contains(nullptr)) {
        std::fprintf(stderr, "cannot open the programs\n");
        return 1;
    }
    figures.grownMiB = residentMiB() - before;
    auto *tabs = bench.editWindow()->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    figures.switchSeconds = switchTabs(tabs, switches);
    pageThrough(tabs);
    figures.pagedMiB = residentMiB() - before;
    report("two programs in the window's tabs", figures);
    std::printf("goal: every switch under 50 ms: %s\n", maximum(figures.switchSeconds) < 0.05 ? "met" : "NOT met");
    for (ZuSourceCode *editor : qAsConst(editors))
        std::printf("%-40s %d of %d lines coloured at the end\n", qPrintable(editor->objectName()),
                    colouredLines(editor->document()), editor->blockCount());
    return 0;
}

int runPlain(int switches, int length)
{
    // The names as the window holds them once the host has answered.
    BenchWindow bench;
    if (!bench.makeWithExampleVocabulary())
        return 1;
    QStringList texts;
    for (quint32 seed = 0; seed < 2; ++seed)
        texts << program(seed, length, bench.editWindow()->operationNames(), bench.editWindow()->typeNames());

    Figures figures;
    const double before = residentMiB();
    QTabWidget tabs;
    tabs.resize(1200, 800);
    for (const QString &text : qAsConst(texts)) {
        auto *plain = new QPlainTextEdit;
        plain->setFont(QFont(QStringLiteral("courier"), 10));
        plain->setWordWrapMode(QTextOption::NoWrap);
        plain->setPlainText(text);
        tabs.addTab(plain, QString());
        tabs.setCurrentWidget(plain);
    }
    tabs.show();
    if (!QTest::qWaitForWindowExposed(&tabs))
        return 1;
    settle();
    figures.grownMiB = residentMiB() - before;
    figures.switchSeconds = switchTabs(&tabs, switches);
    pageThrough(&tabs);
    figures.pagedMiB = residentMiB() - before;
    report("two plain QPlainTextEdits in a QTabWidget", figures);
    return 0;
}

struct Growth
{
    double opened = -1;
    double paged = -1;
};

// Runs one side in a process of its own, prints what it printed and
// returns how much its resident memory grew; -1s when it failed.
Growth runSide(const QString &side, const QString &switches, const QString &megabytes)
{
    std::fflush(stdout);
    QProcess run;
    run.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    run.start(QCoreApplication::applicationFilePath(), { side, switches, megabytes });
    if (!run.waitForFinished(-1) || run.exitStatus() != QProcess::NormalExit || run.exitCode() != 0)
        return {};
    const QString output = QString::fromLocal8Bit(run.readAllStandardOutput());
    std::printf("%s", qPrintable(output));
    auto figure = [&output](const char *pattern) {
        const QRegularExpressionMatch match = QRegularExpression(QString::fromLatin1(pattern)).match(output);
        return match.hasMatch() ? match.captured(1).toDouble() : -1;
    };
    return { figure("grew +([0-9.]+) MiB"), figure("resident +([0-9.]+) MiB over before") };
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setCursorFlashTime(0);
    QStringList arguments = app.arguments().mid(1);
    const bool side = !arguments.isEmpty() && arguments.first().startsWith(QLatin1String("--"));
    const QString mode = side ? arguments.takeFirst() : QString();
    const int switches = qMax(1, arguments.value(0, QStringLiteral("20")).toInt());
    const int megabytes = qMax(1, arguments.value(1, QStringLiteral("5")).toInt());
    if (mode == QLatin1String("--window"))
        return runWindow(switches, megabytes * 1024 * 1024);
    if (mode == QLatin1String("--plain"))
        return runPlain(switches, megabytes * 1024 * 1024);

    std::printf("two generated programs of %d MiB each, %d switches between their tabs\n", megabytes, switches);
    const Growth window = runSide(QStringLiteral("--window"), QString::number(switches), QString::number(megabytes));
    const Growth plain = runSide(QStringLiteral("--plain"), QString::number(switches), QString::number(megabytes));
    if (window.opened < 0 || plain.opened <= 0 || plain.paged <= 0)
        return 1;
    std::printf("memory: the window's programs take %.2fx what the plain editors take "
                "(goal: at most 1.5x); %.2fx once every line has been shown\n",
                window.opened / plain.opened, window.paged / plain.paged);
    return 0;
}
