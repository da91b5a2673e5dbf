#ifndef SETTINGSSTORE_H
#define SETTINGSSTORE_H

#include <QSettings>

#include "settingelement.h"

// Keeps a plug-in's settings in an INI file, one group per key. Each group
// records the declared type beside the value, since INI text alone does not
// give a list of one string or an empty list back as a list.
//
// The settings live in memory and the file is written whole by sync(). The
// file's lock is tried first, for a limited time: QSettings would wait for
// it for ever, and a lock that cannot be taken (left by a live process, or
// a directory in its place) would hang the host at exit.
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

    // How long sync() and lockable() try to take the file's lock.
    void setLockTimeout(int milliseconds);
    // Whether the file's lock can be taken; errorString() says why not.
    bool lockable();
    // Writes the settings; false, with errorString(), if they could not be.
    bool sync();
    QString errorString() const;

private:
    static void write(QSettings &settings, const SettingElement &element);
    static SettingElement read(const QSettings &settings, const QString &key);

    QString m_fileName;
    SettingsList m_list;
    int m_lockTimeout = 5000;
    QString m_error;
};

#endif // SETTINGSSTORE_H
