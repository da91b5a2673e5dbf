#include "settingsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

#include <limits>

SettingsDialog::SettingsDialog(const QString &page, const SettingsList &settings, QWidget *parent)
    : QDialog(parent)
    , m_settings(settings)
{
    setWindowTitle(tr("Settings — %1").arg(page));
    auto *form = new QFormLayout(this);

    for (int i = 0; i < m_settings.size(); ++i) {
        const SettingElement &element = m_settings.at(i);
        if (!element.description.startsWith(QLatin1Char('.')))
            continue;
        QWidget *editor = createEditor(element);
        // A type without an editor here is left as the plug-in keeps it.
        if (!editor)
            continue;
        editor->setObjectName(element.key);
        editor->setToolTip(element.help);
        auto *label = new QLabel(element.description.mid(1));
        label->setToolTip(element.help);
        label->setBuddy(editor);
        form->addRow(label, editor);
        m_fields.append({i, editor, editorValue(editor)});
    }

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
}

SettingsList SettingsDialog::settings() const
{
    SettingsList settings = m_settings;
    for (const Field &field : m_fields) {
        const QVariant value = editorValue(field.editor);
        if (value != field.shown)
            settings[field.index].value = value;
    }
    return settings;
}

QWidget *SettingsDialog::createEditor(const SettingElement &element)
{
    switch (element.type) {
    case QVariant::Bool: {
        auto *box = new QCheckBox;
        box->setChecked(element.value.toBool());
        return box;
    }
    case QVariant::Int: {
        auto *box = new QSpinBox;
        const QVariantList range = element.range.toList();
        if (range.size() == 2)
            box->setRange(range.at(0).toInt(), range.at(1).toInt());
        else
            box->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
        box->setSingleStep(qMax(1, element.step.toInt()));
        box->setValue(element.value.toInt());
        return box;
    }
    case QVariant::String:
        return new QLineEdit(element.value.toString());
    default:
        return nullptr;
    }
}

QVariant SettingsDialog::editorValue(const QWidget *editor)
{
    if (auto *box = qobject_cast<const QCheckBox *>(editor))
        return box->isChecked();
    if (auto *box = qobject_cast<const QSpinBox *>(editor))
        return box->value();
    return qobject_cast<const QLineEdit *>(editor)->text();
}
