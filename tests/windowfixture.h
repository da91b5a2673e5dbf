#ifndef WINDOWFIXTURE_H
#define WINDOWFIXTURE_H

#include "testsupport.h"

class EditWindow;
class QListWidget;
class QPushButton;
class QTabWidget;
class TextEdit;

// The plug-in object and its window, made in a temporary current directory
// of their own (the window lists and watches the current directory), with
// the lists and tabs a user drives. Test classes derive from it beside
// QObject and call it from their own init(), cleanup() and window making.
class WindowFixture
{
protected:
    // Makes the plug-in object and its window and finds the window's lists
    // and tabs; false when one of them is missing.
    bool makePluginWindow();
    // Deletes the window and the plug-in object and forgets the widgets.
    void deletePluginWindow();
    QPushButton *button(const char *name) const;

    TempCurrentDir tempDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
    QListWidget *programs = nullptr;
    QListWidget *projects = nullptr;
    QListWidget *projectPrograms = nullptr;
    QTabWidget *selector = nullptr;
    QTabWidget *tabs = nullptr;
};

#endif // WINDOWFIXTURE_H
