#ifndef PLUGININTERFACE_H
#define PLUGININTERFACE_H

#include <QtPlugin>

#include "settingelement.h"

class QString;

// The one interface through which the host talks to a plug-in's root object.
// The host owns the plug-in object's lifetime through the module, never
// through this interface, so the destructor is protected and not virtual.
class PluginInterface
{
public:
    virtual SettingsList exchangeSettings(SettingsList list, QString *, QString *)
    {
        return list;
    }

protected:
    ~PluginInterface() = default;
};

#define PluginInterface_iid "org.zu.PluginInterface/1.0"

Q_DECLARE_INTERFACE(PluginInterface, PluginInterface_iid)

#endif // PLUGININTERFACE_H
