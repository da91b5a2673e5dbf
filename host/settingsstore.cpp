#include "settingsstore.h"

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

SettingsStore::SettingsStore(const QString &fileName)
    : m_settings(fileName, QSettings::IniFormat)
{
    // Descriptions and help texts are Russian: keep them readable.
    m_settings.setIniCodec("UTF-8");
}

QString SettingsStore::fileName() const
{
    return m_settings.fileName();
}

SettingsList SettingsStore::list() const
{
    SettingsList list;
    const QStringList keys = this->keys();
    for (const QString &key : keys)
        list << read(key);
    return list;
}

void SettingsStore::setList(const SettingsList &list)
{
    m_settings.clear();
    QStringList keys;
    for (const SettingElement &element : list) {
        keys << element.key;
        write(element);
    }
    m_settings.setValue(keysKey, keys);
}

void SettingsStore::setValue(const QString &key, const QVariant &value)
{
    QStringList keys = this->keys();
    if (keys.contains(key)) {
        m_settings.setValue(key + QLatin1String("/value"), value);
        return;
    }
    SettingElement element;
    element.key = key;
    element.value = value;
    element.type = value.type();
    write(element);
    m_settings.setValue(keysKey, keys << key);
}

bool SettingsStore::sync()
{
    m_settings.sync();
    return m_settings.status() == QSettings::NoError;
}

QStringList SettingsStore::keys() const
{
    return m_settings.value(keysKey).toStringList();
}

void SettingsStore::write(const SettingElement &element)
{
    m_settings.beginGroup(element.key);
    m_settings.setValue("type", int(element.type));
    m_settings.setValue("value", element.value);
    m_settings.setValue("description", element.description);
    m_settings.setValue("range", element.range);
    m_settings.setValue("step", element.step);
    m_settings.setValue("help", element.help);
    m_settings.setValue("extra", element.extra);
    m_settings.endGroup();
}

SettingElement SettingsStore::read(const QString &key) const
{
    const auto field = [&](const char *name) {
        return m_settings.value(key + QLatin1Char('/') + QLatin1String(name));
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
