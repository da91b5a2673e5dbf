#include "windowfixture.h"

#include <QPushButton>

#include "editorsupport.h"
#include "editwindow.h"

bool WindowFixture::makePluginWindow()
{
    makePlugin(plugin, window);
    return window && findListsAndTabs(window, programs, projects, projectPrograms, selector, tabs);
}

void WindowFixture::deletePluginWindow()
{
    deletePlugin(plugin, window);
    programs = projects = projectPrograms = nullptr;
    selector = tabs = nullptr;
}

QPushButton *WindowFixture::button(const char *name) const
{
    return window->findChild<QPushButton *>(QLatin1String(name));
}
