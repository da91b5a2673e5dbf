#ifndef PLUGINDESCRIPTOR_H
#define PLUGINDESCRIPTOR_H

#include "plugininterface.h"
#include "seginterfaces.h"

// A plug-in object's own members follow its PluginInterface sub-object:
// a 32-bit word, then the descriptor. This is how a host finds the
// descriptor without knowing the plug-in's class.
struct PluginObjectHead
{
    quint32 word;
    SEGINTERFACES descriptor;
};

inline SEGINTERFACES *pluginDescriptor(PluginInterface *plugin)
{
    char *afterInterface = reinterpret_cast<char *>(plugin) + sizeof(PluginInterface);
    return &reinterpret_cast<PluginObjectHead *>(afterInterface)->descriptor;
}

#endif // PLUGINDESCRIPTOR_H
