#include "offscreenapplication.h"

#include <QGuiApplication>

#include <cstdlib>

void startOffscreenApplication(const char *name)
{
    // QGuiApplication keeps references to these for its whole life.
    static int argc = 1;
    static char *argv[] = { const_cast<char *>(name), nullptr };
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication *application = nullptr;
    application = new QGuiApplication(argc, argv);
    std::atexit([] { delete application; });
}
