#ifndef SETTINGSSTORE_H
#define SETTINGSSTORE_H

#include <QSettings>

#include "settingelement.h"

// Keeps a plug-in's settings in an INI file, one group per key. Each group
// records the declared type beside the value, since INI text alone does not
// give a list of one string or an empty list back as a list.
class SettingsStore
{
public:
    explicit SettingsStore(const QString &fileName);

    QString fileName() const;

    // The stored settings, in the order the plug-in declared them.
    SettingsList list() const;
    // Replaces everything stored by the list.
    void setList(const SettingsList &list);
    // Changes the value of one key; an unknown key is added with the
    // value's own type.
    void setValue(const QString &key, const QVariant &value);

    // Writes pending changes; false if the file could not be written.
    bool sync();

private:
    QStringList keys() const;
    void write(const SettingElement &element);
    SettingElement read(const QString &key) const;

    QSettings m_settings;
};

#endif // SETTINGSSTORE_H
