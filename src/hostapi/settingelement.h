#ifndef SETTINGELEMENT_H
#define SETTINGELEMENT_H

#include <QList>
#include <QString>
#include <QVariant>

// One setting as the host keeps it. The field order is the host's.
struct SettingElement
{
    QString key;
    QVariant value;
    QVariant::Type type = QVariant::Invalid;
    QString description;   // a leading "." marks a setting the user edits
    QVariant range;        // [min, max] for integers, else 0
    QVariant step;
    QString help;
    QString extra;
};

typedef QList<SettingElement> SettingsList;

#endif // SETTINGELEMENT_H
