// Opening a program with host tables of 1,000 and 100,000 names: the time
// from the host's answer to the tab of a 500-line program shown and
// highlighted, and the memory the process holds.
//
//   QT_QPA_PLATFORM=offscreen bench_vocabulary [names...]
//
// Each size runs in a process of its own (the program runs itself with
// --names N), so that the peak memory is that size's alone. The vocabulary
// is examples/vocabulary followed by generated entries, read by the host's
// own Vocabulary as zuhost reads its file: operations, each with a tool
// tip and every other one with a Cyrillic second name, and a type in every
// fifth entry. The program's lines use all the names.
//
// The figures: "tables" is the window taking the host's answer, "tab" the
// opening of the program up to its first repaint, highlighted; the memory
// is resident before the host's answer, once the tab is open, and at the
// peak.

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTextBlock>
#include <QTextLayout>

#include <cstdio>

#include "benchsupport.h"
#include "benchwindow.h"
#include "editwindow.h"
#include "highlightcomparison.h"
#include "vocabulary.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

const QString exampleVocabulary = QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary");

QStringList operationNames(const Vocabulary &vocabulary)
{
    QStringList names;
    for (const Vocabulary::Operation &operation : vocabulary.operations())
        names << operation.name << operation.secondName;
    names.removeAll(QString());
    return names;
}

QStringList typeNames(const Vocabulary &vocabulary)
{
    QStringList names;
    for (const Vocabulary::Type &type : vocabulary.types())
        names << type.name << type.secondName;
    names.removeAll(QString());
    return names;
}

int nameCount(const Vocabulary &vocabulary)
{
    return operationNames(vocabulary).size() + typeNames(vocabulary).size();
}

// A name of its own for each number: its digits in base 20 as syllables,
// at least three of them, so that no word of the example vocabulary is one.
QString syllableName(int number, const QStringList &syllables)
{
    QString name;
    for (int digits = 0; digits < 3 || number > 0; ++digits) {
        name += syllables.at(number % syllables.size());
        number /= syllables.size();
    }
    return name;
}

// The example vocabulary's lines followed by generated entries, until the
// entries hold `names` names.
QByteArray generatedVocabulary(int names, int exampleNames)
{
    const QStringList latin = QString::fromLatin1(
        "ba ke di lo mu ra si to vu ze na pe go fi ha jo ku le mo ny").split(QLatin1Char(' '));
    const QStringList cyrillic = QString::fromUtf8(
        "ба ке ди ло му ра си то ву зе на пе го фи ха жо ку ле мо ню").split(QLatin1Char(' '));
    QFile example(exampleVocabulary);
    if (!example.open(QIODevice::ReadOnly))
        return QByteArray();
    QString text = QString::fromUtf8(example.readAll()) + QLatin1Char('\n');
    int remaining = names - exampleNames;
    for (int number = 0; remaining > 0; ++number) {
        QString name = syllableName(number, latin);
        if (number % 5 == 4) {
            name[0] = name.at(0).toUpper();
            text += QStringLiteral("type ") + name + QLatin1Char('\n');
            --remaining;
            continue;
        }
        // Some names hold an underscore: those are coloured inside words too.
        if (number % 10 == 3)
            name = QStringLiteral("get_") + name;
        text += QStringLiteral("operation ") + name;
        --remaining;
        if (number % 2 == 0 && remaining > 0) {
            text += QLatin1Char(' ') + syllableName(number, cyrillic);
            --remaining;
        }
        text += QStringLiteral(" : ") + name + QStringLiteral("(значение, шаг)\\n")
            + QStringLiteral("Сгенерированная операция номер %1: возвращает значение, измененное на шаг.")
                  .arg(number)
            + QLatin1Char('\n');
    }
    return text.toUtf8();
}

struct Figures
{
    int names = 0;
    int lines = 0;
    int colouredLines = 0;
    double tablesSeconds = 0;
    double tabSeconds = 0;
    double residentBefore = 0;
    double residentAfter = 0;
    double peakResident = 0;
};

// Opens the program with a vocabulary of `names` names; false on failure.
bool measure(int names, Figures &figures)
{
    Vocabulary example;
    BenchWindow bench;
    if (!example.load(exampleVocabulary) || !bench.make())
        return false;
    const QString vocabularyFile = QStringLiteral("vocabulary");
    Vocabulary vocabulary;
    if (!writeFile(vocabularyFile, generatedVocabulary(names, nameCount(example)))
        || !vocabulary.load(vocabularyFile) || !vocabulary.errors().isEmpty())
        return false;
    figures.names = nameCount(vocabulary);

    QRandomGenerator random(static_cast<quint32>(names));
    const QStringList lines = makeZuLines(random, 500, operationNames(vocabulary), typeNames(vocabulary));
    const QString program = QStringLiteral("program");
    if (!bench.writeProgram(program, lines.join(QLatin1Char('\n')) + QLatin1Char('\n')))
        return false;
    figures.lines = lines.size();
    settle();
    figures.residentBefore = residentMiB();

    QElapsedTimer timer;
    timer.start();
    bench.answerTables(vocabulary);
    figures.tablesSeconds = timer.nsecsElapsed() / 1e9;
    timer.start();
    const ZuSourceCode *editor = bench.openProgram(program);
    if (!editor)
        return false;
    figures.tabSeconds = timer.nsecsElapsed() / 1e9;
    figures.colouredLines = colouredLines(editor->document());
    figures.residentAfter = residentMiB();
    figures.peakResident = peakResidentMiB();
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    if (arguments.size() == 2 && arguments.first() == QLatin1String("--names")) {
        Figures figures;
        if (!measure(arguments.at(1).toInt(), figures)) {
            std::fprintf(stderr, "cannot open the program with %s names\n", qPrintable(arguments.at(1)));
            return 1;
        }
        std::printf("%7d names: tables %6.3f s   tab %6.3f s   open %6.3f s   "
                    "resident %4.0f -> %4.0f MiB, peak %4.0f MiB   (%d of %d lines coloured)\n",
                    figures.names, figures.tablesSeconds, figures.tabSeconds,
                    figures.tablesSeconds + figures.tabSeconds, figures.residentBefore,
                    figures.residentAfter, figures.peakResident, figures.colouredLines,
                    figures.lines);
        return 0;
    }

    const QStringList sizes = arguments.isEmpty()
        ? QStringList { QStringLiteral("1000"), QStringLiteral("100000") } : arguments;
    for (const QString &size : sizes) {
        std::fflush(stdout);
        QProcess run;
        run.setProcessChannelMode(QProcess::ForwardedChannels);
        run.start(QCoreApplication::applicationFilePath(), { QStringLiteral("--names"), size });
        if (!run.waitForFinished(-1) || run.exitStatus() != QProcess::NormalExit || run.exitCode() != 0)
            return 1;
    }
    return 0;
}
