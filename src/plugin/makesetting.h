#ifndef MAKESETTING_H
#define MAKESETTING_H

#include "settingelement.h"

// Merges one declared setting into the host's list and returns the value
// to apply: the host's value when it has the key, else the default.
QVariant makeSetting(SettingsList *list, QString key, QVariant value, QVariant::Type type,
                     QString description, QVariant range, QVariant step, QString help,
                     QString extra);

#endif // MAKESETTING_H
