#ifndef COMPILEOPTIONS_H
#define COMPILEOPTIONS_H

#include <QCommandLineOption>
#include <QStringList>

#include "windowreport.h"

class PluginHost;
class QCommandLineParser;
class Vocabulary;

// zuhost's options for compiling: the compiler and its time limit, the
// built-in checker run on its own, and two aids for scripts and tests, one
// that presses the window's compile button and one that reports what the
// window shows at exit.
class CompileOptions
{
public:
    CompileOptions();

    void addTo(QCommandLineParser &parser) const;
    // False, with a warning, when a value is malformed.
    bool read(const QCommandLineParser &parser);

    // Whether zuhost is only to check a program, without a window.
    bool checkOnly() const;
    // Checks the program or project named with --check in the directory,
    // prints the message the host would send and returns the exit code:
    // 0 ready to run, 1 an error found, 2 a file that cannot be read.
    int check(const Vocabulary &vocabulary, const QString &directory) const;

    // Before the host starts the plug-in.
    void apply(PluginHost &host);

private:
    void pressCompile(PluginHost &host);

    const QCommandLineOption m_compilerOption;
    const QCommandLineOption m_timeLimitOption;
    const QCommandLineOption m_checkOption;
    const QCommandLineOption m_compileOption;
    const QCommandLineOption m_reportOption;

    QStringList m_command;
    int m_timeLimit = 30;
    QString m_checkName;
    int m_presses = 0;
    QString m_reportPath;
    WindowReport m_report;
};

#endif // COMPILEOPTIONS_H
