#ifndef BENCHWINDOW_H
#define BENCHWINDOW_H

#include <QString>

#include "windowfixture.h"

class Vocabulary;
class ZuSourceCode;

// The editor's window as a host opens it, for the benchmarks: in a
// temporary current directory of its own, given the host's tables from a
// vocabulary, shown at a usual size.
class BenchWindow : public WindowFixture
{
public:
    ~BenchWindow();

    // Makes the window; false when it or its directory cannot be made.
    bool make();
    // Hands the window the vocabulary's tables, as the host answers them.
    void answerTables(Vocabulary &vocabulary);
    // Makes the window and answers its tables from examples/vocabulary;
    // false, said on standard error, when either cannot be done.
    bool makeWithExampleVocabulary();
    // Writes the program's file in windows-1251.
    bool writeProgram(const QString &name, const QString &text);
    // Opens the program in a tab of the shown window and lets it paint,
    // which colours the lines in view; null on failure.
    ZuSourceCode *openProgram(const QString &name);

    EditWindow *editWindow() const { return window; }
};

#endif // BENCHWINDOW_H
