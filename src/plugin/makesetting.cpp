#include "makesetting.h"

QVariant makeSetting(SettingsList *list, QString key, QVariant value, QVariant::Type type,
                     QString description, QVariant range, QVariant step, QString help,
                     QString extra)
{
    SettingElement element { key, value, type, description, range, step, help, extra };
    for (SettingElement &stored : *list) {
        if (stored.key == key) {
            // The host's value survives; everything else is refreshed
            // from the declaration. No range check: the range is for the
            // host's editor.
            element.value = stored.value;
            stored = element;
            return element.value;
        }
    }
    list->append(element);
    return element.value;
}
