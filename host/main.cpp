#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QPixmap>
#include <QStandardPaths>
#include <QTimer>
#include <QWidget>

#include <csignal>

#include "compileoptions.h"
#include "installpaths.h"
#include "pluginhost.h"
#include "qttranslation.h"
#include "settingsstore.h"
#include "unixsignalwatcher.h"
#include "vocabulary.h"

namespace {

// A vocabulary asked for must be readable; without the sample the plug-in
// just gets empty tables. A malformed line costs only its own entry.
bool loadVocabulary(Vocabulary &vocabulary, const QString &path, bool required)
{
    if (!required && !QFileInfo::exists(path)) {
        qWarning("zuhost: no vocabulary at %s, so the tables stay empty", qPrintable(path));
        return true;
    }
    if (!vocabulary.load(path)) {
        qWarning("zuhost: cannot read the vocabulary %s: %s",
                 qPrintable(path), qPrintable(vocabulary.errorString()));
        return false;
    }
    const QStringList errors = vocabulary.errors();
    for (const QString &error : errors)
        qWarning("zuhost: %s", qPrintable(error));
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zuhost"));
    QApplication::setApplicationVersion(QStringLiteral(ZUHOST_VERSION));
    // Before any of Qt's texts is made, the command line help among them.
    installQtTranslation(QLocale(), QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    // Closing the editor window ends the host through PluginHost, which may
    // refuse while there are unsaved programs.
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
            "Development host for the Zu source editor plug-in."));
    parser.addHelpOption();
    parser.addVersionOption();
    const InstallPaths installed(QCoreApplication::applicationDirPath());
    const QCommandLineOption moduleOption(QStringLiteral("module"),
            QStringLiteral("Load the plug-in module from <path> (default: %1).").arg(installed.module()),
            QStringLiteral("path"), installed.module());
    const QCommandLineOption settingsOption(QStringLiteral("settings"),
            QStringLiteral("Keep the plug-in's settings in the INI file <file>."), QStringLiteral("file"),
            QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                    + QStringLiteral("/zuhost.ini"));
    const QCommandLineOption vocabularyOption(QStringLiteral("vocabulary"),
            QStringLiteral("Answer the plug-in's tables and tool tips from the vocabulary <file> "
                           "(default: %1).").arg(installed.vocabulary()),
            QStringLiteral("file"), installed.vocabulary());
    const QCommandLineOption dirOption(QStringLiteral("dir"),
            QStringLiteral("Use <dir> as the programs directory."), QStringLiteral("dir"));
    const QCommandLineOption screenshotOption(QStringLiteral("screenshot"),
            QStringLiteral("Save a PNG of the editor window to <file>, then quit."),
            QStringLiteral("file"));
    const QCommandLineOption quitAfterOption(QStringLiteral("quit-after"),
            QStringLiteral("Quit after <ms> milliseconds."), QStringLiteral("ms"));
    parser.addOptions({moduleOption, settingsOption, vocabularyOption, dirOption,
                       screenshotOption, quitAfterOption});
    CompileOptions compileOptions;
    compileOptions.addTo(parser);
    parser.addPositionalArgument(QStringLiteral("names"),
            QStringLiteral("Programs or projects to open once the editor runs."),
            QStringLiteral("[names...]"));
    parser.process(app);
    if (!compileOptions.read(parser))
        return 1;

    int quitAfter = -1;
    if (parser.isSet(quitAfterOption)) {
        bool ok = false;
        quitAfter = parser.value(quitAfterOption).toInt(&ok);
        if (!ok || quitAfter < 0) {
            qWarning("zuhost: --quit-after needs a number of milliseconds");
            return 1;
        }
    }

    // File names on the command line are relative to where zuhost was
    // started, not to the programs directory.
    const auto absolutePath = [&parser](const QCommandLineOption &option) {
        return QFileInfo(parser.value(option)).absoluteFilePath();
    };
    const QString modulePath = absolutePath(moduleOption);
    const QString screenshotPath = absolutePath(screenshotOption);
    const QString vocabularyPath = absolutePath(vocabularyOption);

    // Checking needs neither the settings nor the plug-in.
    if (compileOptions.checkOnly()) {
        Vocabulary vocabulary;
        if (!loadVocabulary(vocabulary, vocabularyPath, parser.isSet(vocabularyOption)))
            return 1;
        return compileOptions.check(vocabulary, parser.value(dirOption));
    }

    SettingsStore store(absolutePath(settingsOption));
    // Found now rather than when the settings are written at exit.
    if (!store.lockable()) {
        qWarning("zuhost: cannot keep the settings: %s", qPrintable(store.errorString()));
        return 1;
    }
    PluginHost host(&store);
    if (!loadVocabulary(host.vocabulary(), vocabularyPath, parser.isSet(vocabularyOption)))
        return 1;

    if (parser.isSet(dirOption)) {
        // Before the plug-in exists: its window lists the current directory
        // when it is made. Recorded before the exchange so that a directory
        // stored by an earlier run does not take its place.
        if (!QDir::setCurrent(parser.value(dirOption))) {
            qWarning("zuhost: cannot enter %s", qPrintable(parser.value(dirOption)));
            return 1;
        }
        store.setValue(QStringLiteral("programsDir"), QDir::currentPath());
    }

    if (!host.load(modulePath)) {
        qWarning("%s", qPrintable(host.errorString()));
        return 2;
    }
    compileOptions.apply(host);
    // A termination signal ends zuhost as closing the window does, without
    // the questions; before the start, it waits in the watcher's socket.
    UnixSignalWatcher signalWatcher({SIGTERM, SIGINT});
    QObject::connect(&signalWatcher, &UnixSignalWatcher::received, &host, &PluginHost::terminate);
    host.start();
    host.openPrograms(parser.positionalArguments());

    if (parser.isSet(screenshotOption)) {
        QTimer::singleShot(0, &host, [&host, screenshotPath] {
            const bool saved = host.window()->grab().save(screenshotPath, "PNG");
            if (!saved)
                qWarning("zuhost: cannot save the screenshot to %s", qPrintable(screenshotPath));
            host.finish(saved ? 0 : 1);
        });
    }
    if (quitAfter >= 0)
        QTimer::singleShot(quitAfter, &host, [&host] { host.finish(); });

    return app.exec();
}
