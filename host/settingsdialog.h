#ifndef SETTINGSDIALOG_H
#define SETTINGSDIALOG_H

#include <QDialog>
#include <QVector>

#include "settingelement.h"

// Edits the settings of one plug-in page that are meant for the user, those
// whose description begins with ".": a check box, spin box or line edit for
// each, named after its key, with the help text as its tool tip.
class SettingsDialog : public QDialog
{
    Q_OBJECT

public:
    SettingsDialog(const QString &page, const SettingsList &settings, QWidget *parent = nullptr);

    // The settings given, with the values the user changed. A field left as
    // shown keeps its value as stored, even one its editor could not show
    // (an integer outside its range is shown clamped).
    SettingsList settings() const;

private:
    struct Field
    {
        int index;        // in the settings given
        QWidget *editor;
        QVariant shown;
    };

    static QWidget *createEditor(const SettingElement &element);
    static QVariant editorValue(const QWidget *editor);

    SettingsList m_settings;
    QVector<Field> m_fields;
};

#endif // SETTINGSDIALOG_H
