#ifndef TEXTEDIT_H
#define TEXTEDIT_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariant>

#include "plugininterface.h"
#include "seginterfaces.h"

class EditWindow;

// The module's root object. It introduces the editor window to the host:
// the host reads the descriptor copy that follows the PluginInterface part
// of this object, connects the sockets on the window and starts it.
class TextEdit : public QObject, public PluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PluginInterface_iid)
    Q_INTERFACES(PluginInterface)

public:
    TextEdit();
    ~TextEdit() override;

    // The records every instance starts from; never written.
    static const SEGINTERFACES interfaces;
    static const SocketRecord socketz[];

    SEGINTERFACES *descriptor() { return &m_descriptor; }
    EditWindow *window() const { return m_window; }

signals:
    void changeVariant(QString key, QVariant value, bool sync = false, bool change = true);

public slots:
    SettingsList exchangeSettings(SettingsList, QString *, QString *) override;

private:
    // The host reads these by layout: keep their order.
    quint32 m_reserved = 0;
    SEGINTERFACES m_descriptor;
    QByteArray m_bytes;
    EditWindow *m_window = nullptr;
};

#endif // TEXTEDIT_H
