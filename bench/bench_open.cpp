// Opening a big program in the editor's window: generated programs of 1, 5
// and 20 MiB with the names of examples/vocabulary, each opened in a new tab
// of the shown window, beside the same text set in a plain QPlainTextEdit.
//
//   QT_QPA_PLATFORM=offscreen bench_open [megabytes...]
//
// The times run from the start of the open: the window's addTextTab(), the
// plain editor's setPlainText().
//  - text shown: the end of the editor's first paint;
//  - coloured (the window only): the end of the first paint that began with
//    every line in view coloured;
//  - the longest stretch without a turn of the event loop, from a heartbeat
//    timer running until the coloured point and 300 ms beyond: the open
//    call itself, and the longest one after it returned. The goal: beyond
//    the plain editor's own loading, no stretch over 50 ms;
//  - memory: the peak and, once all has settled, the resident memory, each
//    over the resident memory before the open.
// The floor is a plain QPlainTextEdit in the editor's font, at the editor's
// size, without wrapping. The program runs itself with --window or --plain
// for each side of each size, so that neither finds the other's memory; the
// parent writes the program file once for both.

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPlainTextEdit>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextCodec>
#include <QTimer>
#include <QtTest>

#include <cstdio>

#include "benchsupport.h"
#include "benchwindow.h"
#include "codepage.h"
#include "editorsupport.h"
#include "editwindow.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

constexpr qint64 colouredLimitMs = 120000;
constexpr qint64 tailMs = 300;
constexpr double goalMs = 50;

// Times in ms, memory in MiB; -1 where there is none.
struct Figures
{
    double shownMs = -1;
    double colouredMs = -1;
    double openMs = -1;
    double afterMs = -1;
    double peakMiB = -1;
    double grownMiB = -1;
};

// Writes a generated program of at least `bytes` bytes in the editor's code
// page, a batch of lines at a time, and returns its line count; -1 when it
// cannot be written.
int writeGeneratedProgram(const QString &path, qint64 bytes, const QStringList &operations,
                          const QStringList &types)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return -1;
    QRandomGenerator random(static_cast<quint32>(bytes));
    int lines = 0;
    for (qint64 written = 0; written < bytes;) {
        const QStringList batch = makeZuLines(random, 1000, operations, types);
        const QByteArray data = windows1251()->fromUnicode(batch.join(QLatin1Char('\n')) + QLatin1Char('\n'));
        if (file.write(data) != data.size())
            return -1;
        written += data.size();
        lines += batch.size();
    }
    return file.flush() ? lines : -1;
}

// The resident memory before the open, with the peak brought down to it so
// that the peak read afterwards is the open's own, not the reading of the
// text or the making of the window: 5 written to clear_refs resets VmHWM.
double residentBeforeOpen()
{
    settle();
    QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
    if (!clearRefs.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || clearRefs.write("5", 1) != 1)
        std::fprintf(stderr, "cannot reset the peak resident memory: the peak may be an earlier one\n");
    return residentMiB();
}

// Times one open on a clock started just before it: the editor's paints
// through a filter on its viewport, and the turns of the event loop through
// a heartbeat timer.
class OpenProbe : public QObject
{
public:
    explicit OpenProbe(bool waitForColours)
        : waitForColours(waitForColours)
    {
        heartbeat.setInterval(1);
        heartbeat.setTimerType(Qt::PreciseTimer);
        connect(&heartbeat, &QTimer::timeout, this, [this] { beat(); });
    }

    void watch(QPlainTextEdit *watched)
    {
        editor = watched;
        editor->viewport()->installEventFilter(this);
    }
    // Just before the open call, and just after it returned.
    void start()
    {
        heartbeat.start();
        clock.start();
    }
    void opened()
    {
        figures.openMs = ms();
        // The first stretch after the open starts with its return, so that
        // the call itself is not counted twice.
        lastBeatMs = figures.openMs;
        figures.afterMs = 0;
    }
    // Runs the event loop until the text is shown (and coloured) or the
    // limit has passed, then for the tail; false when it was not reached.
    bool runEvents()
    {
        const auto reached = [this] { return (waitForColours ? figures.colouredMs : figures.shownMs) >= 0; };
        while (!reached() && ms() < colouredLimitMs)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const double end = ms() + tailMs;
        while (ms() < end)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        heartbeat.stop();
        return reached();
    }

    Figures figures;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Paint || delivering || !clock.isValid())
            return QObject::eventFilter(watched, event);
        // A paint that begins with every line in view coloured shows them
        // in colour; one that comes earlier may not, and the new colours
        // make the editor paint again.
        const bool coloured = waitForColours && shownBlocksColoured(editor);
        // The filter hands the paint on itself to learn when it is over:
        // through the filters installed before this one (the highlighter's
        // among them) to the editor, and the first delivery stops here. A
        // time taken on a later event or timer would count whatever else
        // the event loop does first, such as the highlighter's posted work.
        delivering = true;
        QCoreApplication::sendEvent(watched, event);
        delivering = false;
        const double now = ms();
        if (figures.shownMs < 0)
            figures.shownMs = now;
        if (coloured && figures.colouredMs < 0)
            figures.colouredMs = now;
        return true;
    }

private:
    double ms() const { return clock.nsecsElapsed() / 1e6; }

    void beat()
    {
        const double now = ms();
        if (figures.openMs >= 0)
            figures.afterMs = qMax(figures.afterMs, now - lastBeatMs);
        lastBeatMs = now;
    }

    const bool waitForColours;
    QPlainTextEdit *editor = nullptr;
    QTimer heartbeat;
    QElapsedTimer clock;
    double lastBeatMs = 0;
    bool delivering = false;
};

void printFigures(const Figures &figures)
{
    std::printf("figures %.3f %.3f %.3f %.3f %.2f %.2f\n", figures.shownMs, figures.colouredMs, figures.openMs,
                figures.afterMs, figures.peakMiB, figures.grownMiB);
}

void measureMemory(double before, Figures &figures)
{
    settle();
    figures.peakMiB = peakResidentMiB() - before;
    figures.grownMiB = residentMiB() - before;
}

int runWindow(const QString &source)
{
    BenchWindow bench;
    if (!bench.makeWithExampleVocabulary())
        return 1;
    const QString name = QStringLiteral("program");
    if (!QFile::copy(source, name + QStringLiteral(".zu"))) {
        std::fprintf(stderr, "cannot copy the program\n");
        return 1;
    }
    // The user opens the program in a window already shown.
    EditWindow *window = bench.editWindow();
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        return 1;

    OpenProbe probe(true);
    const double before = residentBeforeOpen();
    probe.start();
    QWidget *page = window->addTextTab(name);
    auto *editor = page ? page->findChild<ZuSourceCode *>() : nullptr;
    // Watched only now that it exists: the call paints nothing, as the
    // paints come from the event loop.
    if (editor)
        probe.watch(editor);
    probe.opened();
    if (!editor) {
        std::fprintf(stderr, "cannot open the program\n");
        return 1;
    }
    if (!probe.runEvents())
        std::fprintf(stderr, "the lines in view were not coloured within %lld s\n", colouredLimitMs / 1000);
    measureMemory(before, probe.figures);
    printFigures(probe.figures);
    // The floor takes the editor's size and font.
    std::printf("editor %d %d %s\n", editor->width(), editor->height(), qPrintable(editor->font().toString()));
    return 0;
}

int runPlain(const QString &source, const QSize &size, const QString &fontName)
{
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read the program\n");
        return 1;
    }
    // Decoded as the editor decodes it, before the open: the text is at
    // hand when setPlainText() is called.
    const QString text = windows1251()->toUnicode(file.readAll());
    file.close();
    QFont font;
    font.fromString(fontName);
    QPlainTextEdit plain;
    plain.setFont(font);
    plain.setWordWrapMode(QTextOption::NoWrap);
    plain.resize(size);
    plain.show();
    if (!QTest::qWaitForWindowExposed(&plain))
        return 1;

    OpenProbe probe(false);
    probe.watch(&plain);
    const double before = residentBeforeOpen();
    probe.start();
    plain.setPlainText(text);
    probe.opened();
    probe.runEvents();
    measureMemory(before, probe.figures);
    printFigures(probe.figures);
    return 0;
}

struct Side
{
    bool ran = false;
    Figures figures;
    QStringList editor; // width, height, font: the window's only
};

// Runs one side in a process of its own and reads the figures it printed.
Side runSide(const QStringList &arguments)
{
    std::fflush(stdout);
    Side side;
    QProcess run;
    run.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    run.start(QCoreApplication::applicationFilePath(), arguments);
    if (!run.waitForFinished(-1) || run.exitStatus() != QProcess::NormalExit || run.exitCode() != 0)
        return side;
    const QStringList lines = QString::fromLocal8Bit(run.readAllStandardOutput()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1String("figures "))) {
            const QStringList values = line.split(QLatin1Char(' ')).mid(1);
            double *const fields[] = { &side.figures.shownMs, &side.figures.colouredMs, &side.figures.openMs,
                                       &side.figures.afterMs, &side.figures.peakMiB, &side.figures.grownMiB };
            side.ran = values.size() == 6;
            for (int i = 0; i < values.size() && i < 6; ++i)
                *fields[i] = values.at(i).toDouble();
        } else if (line.startsWith(QLatin1String("editor "))) {
            // The font's description may hold blanks: it is the rest of the line.
            side.editor = QStringList { line.section(QLatin1Char(' '), 1, 1), line.section(QLatin1Char(' '), 2, 2),
                                        line.section(QLatin1Char(' '), 3) };
        }
    }
    return side;
}

QString cell(double value, const char *format)
{
    return value < 0 ? QStringLiteral("-") : QString::asprintf(format, value);
}

void printRow(const char *what, const Figures &figures)
{
    std::printf("  %-8s %12s %12s %12s %15s %12s %15s\n", what, qPrintable(cell(figures.shownMs, "%.1f")),
                qPrintable(cell(figures.colouredMs, "%.1f")), qPrintable(cell(figures.openMs, "%.1f")),
                qPrintable(cell(figures.afterMs, "%.1f")), qPrintable(cell(figures.peakMiB, "%.1f")),
                qPrintable(cell(figures.grownMiB, "%.1f")));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setCursorFlashTime(0);
    const QStringList arguments = app.arguments().mid(1);
    if (arguments.size() == 2 && arguments.first() == QLatin1String("--window"))
        return runWindow(arguments.at(1));
    if (arguments.size() == 5 && arguments.first() == QLatin1String("--plain"))
        return runPlain(arguments.at(1), QSize(arguments.at(2).toInt(), arguments.at(3).toInt()), arguments.at(4));

    const QStringList sizes = arguments.isEmpty()
        ? QStringList { QStringLiteral("1"), QStringLiteral("5"), QStringLiteral("20") } : arguments;
    // The names as the window holds them once the host has answered.
    BenchWindow bench;
    QTemporaryDir programs;
    if (!bench.makeWithExampleVocabulary() || !programs.isValid())
        return 1;
    const QString path = programs.filePath(QStringLiteral("program.zu"));

    std::printf("opening a generated program: times in ms from the start of the open, memory in MiB over the "
                "resident memory before it\n\n");
    std::printf("  %-8s %12s %12s %12s %15s %12s %15s\n", "", "text shown", "coloured", "open call",
                "longest after", "peak grew", "resident grew");
    QStringList goals;
    bool failed = false;
    for (const QString &size : sizes) {
        const int megabytes = qMax(1, size.toInt());
        const int lines = writeGeneratedProgram(path, megabytes * qint64(1024 * 1024),
                                                bench.editWindow()->operationNames(),
                                                bench.editWindow()->typeNames());
        if (lines < 0) {
            std::fprintf(stderr, "cannot write the program\n");
            return 1;
        }
        std::printf("%d MiB, %d lines\n", megabytes, lines);
        const Side window = runSide({ QStringLiteral("--window"), path });
        const Side plain = window.editor.size() == 3
            ? runSide(QStringList { QStringLiteral("--plain"), path } + window.editor) : Side();
        if (window.ran)
            printRow("window", window.figures);
        if (plain.ran)
            printRow("plain", plain.figures);
        if (!window.ran || !plain.ran || window.figures.colouredMs < 0) {
            std::printf("  FAILED: %s\n", !window.ran || !plain.ran ? "a side did not run"
                                                                    : "the lines in view were never coloured");
            failed = true;
            continue;
        }
        goals << QString::asprintf("%3d MiB: longest stretch after the open %.1f ms (plain %.1f ms): %s",
                                   megabytes, window.figures.afterMs, plain.figures.afterMs,
                                   window.figures.afterMs < goalMs ? "met" : "NOT met");
    }
    std::printf("\ngoal: beyond the plain editor's own loading, no stretch over %.0f ms\n", goalMs);
    for (const QString &goal : qAsConst(goals))
        std::printf("%s\n", qPrintable(goal));
    return failed ? 1 : 0;
}
