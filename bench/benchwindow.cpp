#include "benchwindow.h"

#include <QtTest>

#include <cstdio>

#include "benchsupport.h"
#include "codepage.h"
#include "editwindow.h"
#include "vocabulary.h"
#include "zusourcecode.h"

BenchWindow::~BenchWindow()
{
    deletePluginWindow();
    tempDir.leave();
}

bool BenchWindow::make()
{
    if (!tempDir.make() || !tempDir.enter() || !makePluginWindow())
        return false;
    window->resize(1200, 800);
    return true;
}

void BenchWindow::answerTables(Vocabulary &vocabulary)
{
    window->tablesAnswer(vocabulary.operationTable(), vocabulary.typeTable());
}

bool BenchWindow::writeProgram(const QString &name, const QString &text)
{
    return writeFile(name + QStringLiteral(".zu"), windows1251()->fromUnicode(text));
}

ZuSourceCode *BenchWindow::openProgram(const QString &name)
{
    QWidget *page = window->addTextTab(name);
    if (!page)
        return nullptr;
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        return nullptr;
    // The editor colours the lines in view as it first paints them.
    settle();
    return page->findChild<ZuSourceCode *>();
}

bool BenchWindow::makeWithExampleVocabulary()
{
    Vocabulary vocabulary;
    if (!vocabulary.load(QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary")) || !make()) {
        std::fprintf(stderr, "cannot make the window with the example vocabulary\n");
        return false;
    }
    answerTables(vocabulary);
    return true;
}
