#ifndef PLUGINHOST_H
#define PLUGINHOST_H

#include <QObject>
#include <QPluginLoader>
#include <QPointer>
#include <QStringList>

#include "compilerrunner.h"
#include "hostsockets.h"
#include "settingelement.h"

class PluginInterface;
class QWidget;
class SettingsStore;
struct SEGINTERFACES;

// Drives one plug-in through its life as a host does: load, pair the
// sockets, exchange settings, start it, open the settings editor when it
// asks, and stop it when its window closes or the host is told to quit.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    explicit PluginHost(SettingsStore *store, QObject *parent = nullptr);
    ~PluginHost() override;

    // Loads the module and checks that it is a plug-in of our interface
    // whose descriptor names a window with start and stop slots.
    bool load(const QString &modulePath);
    QString errorString() const;

    // Answers the plug-in's tables and tool tips; load it before start().
    Vocabulary &vocabulary();

    // Compiles what the plug-in asks for and hands it the message.
    CompilerRunner &compiler();

    void start();
    void openPrograms(const QStringList &names);
    QWidget *window() const;

    // Stops the plug-in, keeps what it reports and ends the event loop.
    void finish(int exitCode = 0);
    // Finishes without asking the editor anything, as on a termination
    // signal: changes not saved are lost, and the programs that had them
    // are named on standard error.
    void terminate();
    // The names of the open programs with changes not saved.
    QStringList unsavedPrograms() const;

signals:
    // The plug-in is about to be stopped; its window is as the user left it.
    void finishing();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void keepSetting(const QString &key, const QVariant &value);
    void editSettings(const QString &page);

private:
    bool refuse(const QString &modulePath, const QString &reason);
    // Hands the list to the plug-in, which applies it, and stores the list
    // completed with the plug-in's declarations.
    void exchangeSettings(const SettingsList &list);
    bool mayExit();

    SettingsStore *m_store;
    QPluginLoader m_loader;
    PluginInterface *m_plugin = nullptr;
    SEGINTERFACES *m_descriptor = nullptr;
    QPointer<QWidget> m_window;
    HostSockets m_sockets;
    CompilerRunner m_compiler;
    QString m_error;
    bool m_finished = false;
};

#endif // PLUGINHOST_H
