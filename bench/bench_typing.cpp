// Time per keystroke in the editor as the window sets it up: 200 keys (words
// that start host names, blanks, brackets and Enter) typed into the middle
// of a generated program of 10,000 lines, with 1,000 operation and 300 type
// names, the host answering tool-tip requests inside the request.
//
//   QT_QPA_PLATFORM=offscreen bench_typing [rounds]
//
// Each key goes to the window as the keyboard sends it, so an open
// completion popup gets it first. A keystroke is timed from the key press
// to its return: the edit, the highlighting of the edited line, the
// tool-tip request and the completion popup; and on to the end of what it
// posted, the repaint among it. Each round types the same 200 keys again, one line further down.
//
// The floor is the same keys typed at the same places into a plain
// QPlainTextEdit holding the same text, in the editor's font, tab stops and
// wrapping, shown at the window's size: what Qt's editing and painting cost
// without highlighting, completion and tool tips.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QWindow>
#include <QtTest>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "codepage.h"
#include "editorsupport.h"
#include "editwindow.h"
#include "hosttables.h"
#include "testsupport.h"
#include "textedit.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

const int keysPerRound = 200;

bool isAscii(const QString &name)
{
    return std::all_of(name.begin(), name.end(), [](QChar ch) { return ch.unicode() < 0x80; });
}

bool isPlainWord(const QString &name)
{
    return std::all_of(name.begin(), name.end(), [](QChar ch) {
        return ch.unicode() < 0x80 && (ch.isLetterOrNumber() || ch == QLatin1Char('_'));
    });
}

// The names as a host's tables hold them. An operation's first name is
// ASCII, so the others ride as second names of the first records.
class SampleTables
{
public:
    explicit SampleTables(const ZuSample &sample)
    {
        QStringList others;
        for (const QString &name : sample.operations) {
            if (isAscii(name))
                operationRecords.push_back({ keep(name.toLatin1()), {}, nullptr, 0 });
            else
                others << name;
        }
        for (int i = 0; i < others.size(); ++i)
            operationRecords.at(size_t(i)).secondName = keep(windows1251()->fromUnicode(others.at(i)));
        for (const QString &name : sample.types)
            typeRecords.push_back({ keep(windows1251()->fromUnicode(name)), nullptr, {} });
        operations = { operationRecords.data(), 0, operationRecords.data() + operationRecords.size() };
        types = { typeRecords.data(), 0, typeRecords.data() + typeRecords.size() };
    }

    ARRAY operations {};
    ARRAY types {};

private:
    const char *keep(const QByteArray &bytes)
    {
        names.push_back(bytes);
        return names.back().constData();
    }

    std::vector<QByteArray> names; // moved on growth, their data stays put
    std::vector<OperationRecord> operationRecords;
    std::vector<TypeRecord> typeRecords;
};

// 200 keys: lines of a type, a name and a call, the names cut short so
// that the popup stays open for some of them, each line ended with Enter.
QVector<int> keyScript(const ZuSample &sample)
{
    QStringList operations;
    QStringList types;
    for (const QString &name : sample.operations) {
        if (isPlainWord(name) && name.size() >= 3)
            operations << name;
    }
    for (const QString &name : sample.types) {
        if (isPlainWord(name) && name.size() >= 3)
            types << name;
    }
    QVector<int> keys;
    for (int line = 0; keys.size() < keysPerRound; ++line) {
        const QString operation = operations.at((line * 37) % operations.size());
        const QString type = types.at((line * 11) % types.size());
        const QString text = QStringLiteral("    ") + type + QStringLiteral(" v") + QString::number(line)
            + QStringLiteral(" = ") + operation.left(operation.size() - line % 2)
            + QStringLiteral("(x, [1 + y]) {");
        for (const QChar ch : text)
            keys << ch.unicode();
        keys << Qt::Key_Return;
    }
    keys.resize(keysPerRound);
    return keys;
}

double percentile(std::vector<double> values, double fraction)
{
    std::sort(values.begin(), values.end());
    const size_t index = size_t(std::max(0.0, fraction * double(values.size()) - 1e-9));
    return values.at(std::min(index, values.size() - 1));
}

// Each key's time in ms from its press to the press's return, and on to
// the end of what it posted, the repaint among it.
struct KeyTimes
{
    std::vector<double> toReturn;
    std::vector<double> toRepaint;
};

void report(const char *what, const KeyTimes &times)
{
    auto line = [what](const char *span, const std::vector<double> &milliseconds) {
        std::printf("%-20s key press to %-7s median %6.2f ms   99th percentile %6.2f ms   slowest %7.2f ms\n",
                    what, span, percentile(milliseconds, 0.5), percentile(milliseconds, 0.99),
                    percentile(milliseconds, 1.0));
    };
    line("return:", times.toReturn);
    line("repaint:", times.toRepaint);
}

// Types the script `rounds` times through the window, each round one line
// further down from the middle of the text.
KeyTimes typeKeys(QWindow *keyWindow, QPlainTextEdit *editor, const QVector<int> &keys, int rounds)
{
    KeyTimes times;
    const int startLine = editor->document()->blockCount() / 2;
    for (int round = 0; round < rounds; ++round) {
        QTextCursor cursor(editor->document()->findBlockByNumber(startLine + round));
        editor->setTextCursor(cursor);
        for (const int key : keys) {
            QElapsedTimer timer;
            timer.start();
            if (key == Qt::Key_Return)
                QTest::keyPress(keyWindow, Qt::Key_Return);
            else
                QTest::keyPress(keyWindow, char(key));
            times.toReturn.push_back(timer.nsecsElapsed() / 1e6);
            QCoreApplication::processEvents();
            times.toRepaint.push_back(timer.nsecsElapsed() / 1e6);
            if (key == Qt::Key_Return)
                QTest::keyRelease(keyWindow, Qt::Key_Return);
            else
                QTest::keyRelease(keyWindow, char(key));
        }
    }
    return times;
}

// The floor: a plain editor set up as the window's editor is.
KeyTimes typeKeysInPlainEditor(const ZuSourceCode *model, const QString &text, QSize size,
                                          const QVector<int> &keys, int rounds)
{
    QPlainTextEdit plain;
    plain.setFont(model->font());
    plain.setTabStopDistance(model->tabStopDistance());
    plain.setLineWrapMode(model->lineWrapMode());
    plain.setPlainText(text);
    plain.resize(size);
    if (!showAndActivate(&plain))
        return {};
    plain.setFocus(Qt::OtherFocusReason);
    deliverPending();
    return typeKeys(plain.windowHandle(), &plain, keys, rounds);
}

// The offscreen platform's notes about what it cannot do for a popup would
// be written, and timed, on many keystrokes.
void dropPlatformNotes(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtWarningMsg || !message.startsWith(QLatin1String("This plugin does not support")))
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    qInstallMessageHandler(dropPlatformNotes);
    const int rounds = argc > 1 ? qMax(1, QString::fromLocal8Bit(argv[1]).toInt()) : 3;

    TempCurrentDir dir;
    if (!dir.make() || !dir.enter()) {
        std::fprintf(stderr, "no temporary directory: %s\n", qPrintable(dir.errorString()));
        return 1;
    }
    const ZuSample sample = makeZuSample(12345);
    if (!writeFile(QStringLiteral("bench.zu"), windows1251()->fromUnicode(sample.text())))
        return 1;

    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
    makePlugin(plugin, window);
    SampleTables tables(sample);
    window->tablesAnswer(&tables.operations, &tables.types);
    const QSet<QString> operationNames(window->operationNames().begin(), window->operationNames().end());
    int toolTipRequests = 0;
    QObject::connect(
        window, &EditWindow::operToolTipRequest, window,
        [window, &operationNames, &toolTipRequests](const QString &name) {
            ++toolTipRequests;
            window->operToolTipAnswer(operationNames.contains(name) ? QStringLiteral("Operation ") + name
                                                                    : QString());
        },
        Qt::DirectConnection);

    QWidget *page = window->addTextTab(QStringLiteral("bench"));
    ZuSourceCode *editor = page ? page->findChild<ZuSourceCode *>() : nullptr;
    window->resize(1200, 800);
    if (!editor || !showAndActivate(window)) {
        std::fprintf(stderr, "the program did not open in a shown window\n");
        return 1;
    }
    editor->setFocus(Qt::OtherFocusReason);
    // The lines in view are coloured as the window first paints them.
    deliverPending();

    const QVector<int> keys = keyScript(sample);
    const KeyTimes times = typeKeys(window->windowHandle(), editor, keys, rounds);

    const int typedLines = editor->document()->blockCount() - sample.lines.size() - 1;
    std::printf("%d lines, %d operation and %d type names; %d rounds of %d keys, %d lines made\n",
                int(sample.lines.size()), int(sample.operations.size()), int(sample.types.size()), rounds,
                keysPerRound, typedLines);
    std::printf("%d of the %d keys asked the host for a tool tip\n", toolTipRequests, int(times.toReturn.size()));
    report("the window's editor", times);
    const bool met = percentile(times.toReturn, 0.5) < 2 && percentile(times.toReturn, 0.99) < 10;
    std::printf("goal, key press to return: median under 2 ms, 99th percentile under 10 ms: %s\n",
                met ? "met" : "NOT met");

    const KeyTimes floor = typeKeysInPlainEditor(editor, sample.text(), window->size(), keys, rounds);
    deletePlugin(plugin, window);
    if (floor.toReturn.empty()) {
        std::fprintf(stderr, "the plain editor could not be shown\n");
        return 1;
    }
    report("plain QPlainTextEdit", floor);
    return 0;
}
