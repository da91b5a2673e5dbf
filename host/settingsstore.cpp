#include "settingsstore.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>

namespace {

const char keysKey[] = "keys";

// A range is a [minimum, maximum] pair for integer settings and the integer 0
// otherwise; INI hands both back as text.
QVariant intOrIntList(const QVariant &stored)
{
    if (stored.userType() != QMetaType::QStringList)
        return stored.toInt();
    QVariantList ints;
    const QStringList texts = stored.toStringList();
    for (const QString &text : texts)
        ints << text.toInt();
    return ints;
}

} // namespace

// Descriptions and help texts are Russian: the file keeps them readable as
// UTF-8.
SettingsStore::SettingsStore(const QString &fileName)
    : m_fileName(fileName)
{
    // Reading takes no lock.
    QSettings settings(fileName, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    const QStringList keys = settings.value(keysKey).toStringList();
    for (const QString &key : keys)
        m_list << read(settings, key);
}

QString SettingsStore::fileName() const
{
    return m_fileName;
}

SettingsList SettingsStore::list() const
{
    return m_list;
}

void SettingsStore::setList(const SettingsList &list)
{
    m_list = list;
}

void SettingsStore::setValue(const QString &key, const QVariant &value)
{
    for (SettingElement &element : m_list) {
        if (element.key == key) {
            element.value = value;
            return;
        }
    }
    SettingElement element;
    element.key = key;
    element.value = value;
    element.type = value.type();
    m_list << element;
}

void SettingsStore::setLockTimeout(int milliseconds)
{
    m_lockTimeout = milliseconds;
}

// Taken and given back at once: QSettings takes it again to write, and
// would wait for ever on a lock held by this process. On a first run the
// settings' directory does not exist yet, and no lock file can be made
// without it.
bool SettingsStore::lockable()
{
    const QString directory = QFileInfo(m_fileName).absolutePath();
    if (!QDir().mkpath(directory)) {
        m_error = QStringLiteral("the directory %1 cannot be made").arg(directory);
        return false;
    }
    const QString lockName = m_fileName + QLatin1String(".lock");
    QLockFile lock(lockName);
    if (lock.tryLock(m_lockTimeout))
        return true;
    if (lock.error() == QLockFile::LockFailedError)
        m_error = QStringLiteral("the lock %1 was not taken within %2 ms").arg(lockName).arg(m_lockTimeout);
    else
        m_error = QStringLiteral("the lock %1 cannot be made").arg(lockName);
    return false;
}

bool SettingsStore::sync()
{
    if (!lockable())
        return false;
    QSettings settings(m_fileName, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    settings.clear();
    QStringList keys;
    for (const SettingElement &element : qAsConst(m_list)) {
        keys << element.key;
        write(settings, element);
    }
    settings.setValue(keysKey, keys);
    settings.sync();
    if (settings.status() == QSettings::NoError)
        return true;
    m_error = QStringLiteral("%1 cannot be written").arg(m_fileName);
    return false;
}

QString SettingsStore::errorString() const
{
    return m_error;
}

void SettingsStore::write(QSettings &settings, const SettingElement &element)
{
    settings.beginGroup(element.key);
    settings.setValue("type", int(element.type));
    settings.setValue("value", element.value);
    settings.setValue("description", element.description);
    settings.setValue("range", element.range);
    settings.setValue("step", element.step);
    settings.setValue("help", element.help);
    settings.setValue("extra", element.extra);
    settings.endGroup();
}

SettingElement SettingsStore::read(const QSettings &settings, const QString &key)
{
    const auto field = [&](const char *name) {
        return settings.value(key + QLatin1Char('/') + QLatin1String(name));
    };
    SettingElement element;
    element.key = key;
    element.type = QVariant::Type(field("type").toInt());
    element.value = field("value");
    if (element.type != QVariant::Invalid)
        element.value.convert(element.type);
    element.description = field("description").toString();
    element.range = intOrIntList(field("range"));
    element.step = field("step").toInt();
    element.help = field("help").toString();
    element.extra = field("extra").toString();
    return element;
}
