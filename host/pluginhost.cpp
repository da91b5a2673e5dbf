#include "pluginhost.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFileInfo>
#include <QMetaMethod>
#include <QPlainTextEdit>
#include <QWidget>

#include "plugindescriptor.h"
#include "settingsdialog.h"
#include "settingsstore.h"

namespace {

// The slot named by a descriptor word: Qt's slot prefix, then the signature.
QMetaMethod descriptorSlot(const QObject *object, const char *signature)
{
    if (!signature || signature[0] != '0' + QSLOT_CODE)
        return QMetaMethod();
    const QMetaObject *meta = object->metaObject();
    return meta->method(meta->indexOfSlot(QMetaObject::normalizedSignature(signature + 1)));
}

} // namespace

PluginHost::PluginHost(SettingsStore *store, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_compiler(m_sockets.vocabulary())
{
    connect(&m_sockets, &HostSockets::settingsRequested, this, &PluginHost::editSettings);
    connect(&m_sockets, &HostSockets::compileRequested, &m_compiler, &CompilerRunner::compile);
    connect(&m_compiler, &CompilerRunner::messageReady, &m_sockets, &HostSockets::compilerMessage);
}

PluginHost::~PluginHost()
{
    m_sockets.waitForAnswers();
    // The plug-in leaves its window to the host; it goes before the module
    // that holds its code.
    delete m_window;
    m_loader.unload();
}

bool PluginHost::load(const QString &modulePath)
{
    const QFileInfo module(modulePath);
    if (!module.isFile())
        return refuse(modulePath, tr("no such file"));

    m_loader.setFileName(module.absoluteFilePath());
    QObject *root = m_loader.instance();
    if (!root)
        return refuse(modulePath, m_loader.errorString());

    m_plugin = qobject_cast<PluginInterface *>(root);
    if (!m_plugin)
        return refuse(modulePath, tr("its root object does not implement %1")
                                      .arg(QLatin1String(PluginInterface_iid)));

    m_descriptor = pluginDescriptor(m_plugin);
    m_window = qobject_cast<QWidget *>(m_descriptor->runObject);
    if (!m_descriptor->socketObject || !m_window
            || !descriptorSlot(m_window, m_descriptor->runSlot).isValid()
            || !descriptorSlot(m_window, m_descriptor->stopSlot).isValid())
        return refuse(modulePath, tr("its descriptor names no window with start and stop slots"));
    return true;
}

QString PluginHost::errorString() const
{
    return m_error;
}

Vocabulary &PluginHost::vocabulary()
{
    return m_sockets.vocabulary();
}

CompilerRunner &PluginHost::compiler()
{
    return m_compiler;
}

void PluginHost::start()
{
    m_sockets.pair(m_descriptor->socketObject, m_descriptor->sockets,
                   int(m_descriptor->socketCount));
    connect(m_window, SIGNAL(changeVariant(QString,QVariant,bool,bool)),
            this, SLOT(keepSetting(QString,QVariant)));

    exchangeSettings(m_store->list());

    descriptorSlot(m_window, m_descriptor->runSlot).invoke(m_window, Qt::DirectConnection);
    if (!m_window->isVisible())
        m_window->show();
    m_window->installEventFilter(this);
}

void PluginHost::openPrograms(const QStringList &names)
{
    for (const QString &name : names)
        m_sockets.editProgram(name);
}

QWidget *PluginHost::window() const
{
    return m_window;
}

void PluginHost::finish(int exitCode)
{
    if (m_finished)
        return;
    m_finished = true;
    emit finishing();

    bool stopped = false;
    descriptorSlot(m_window, m_descriptor->stopSlot)
            .invoke(m_window, Qt::DirectConnection, Q_RETURN_ARG(bool, stopped));
    if (!stopped)
        qWarning("zuhost: the plug-in did not confirm its stop");
    if (!m_store->sync()) {
        qWarning("zuhost: cannot write the settings: %s", qPrintable(m_store->errorString()));
        exitCode = 1;
    }
    QCoreApplication::exit(exitCode);
}

void PluginHost::terminate()
{
    if (m_finished)
        return;
    const QStringList unsaved = unsavedPrograms();
    if (!unsaved.isEmpty())
        qWarning("zuhost: changes not saved are lost in: %s", qPrintable(unsaved.join(QStringLiteral(", "))));
    finish();
}

// The interface tells a host nothing about the editors, so the development
// host looks at the window: each program's editor is a ZuSourceCode named
// after the program.
QStringList PluginHost::unsavedPrograms() const
{
    QStringList names;
    const QList<QPlainTextEdit *> editors = m_window->findChildren<QPlainTextEdit *>();
    for (const QPlainTextEdit *editor : editors) {
        if (editor->inherits("ZuSourceCode") && editor->document()->isModified())
            names << editor->objectName();
    }
    return names;
}

bool PluginHost::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Close) {
        if (!mayExit()) {
            event->ignore();
            return true;
        }
        finish();
    }
    return QObject::eventFilter(watched, event);
}

void PluginHost::keepSetting(const QString &key, const QVariant &value)
{
    m_store->setValue(key, value);
}

// The store holds the list as the last exchange completed it, with the
// descriptions, ranges and help texts the dialog shows, and the values the
// plug-in reported since. Window-modal and not blocking: the plug-in's
// button handler returns at once, and the exchange runs on OK.
void PluginHost::editSettings(const QString &page)
{
    auto *dialog = new SettingsDialog(page, m_store->list(), m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        exchangeSettings(dialog->settings());
    });
    dialog->open();
}

bool PluginHost::refuse(const QString &modulePath, const QString &reason)
{
    m_error = tr("zuhost: %1 is not a plug-in for this host: %2").arg(modulePath, reason);
    return false;
}

void PluginHost::exchangeSettings(const SettingsList &list)
{
    m_store->setList(m_plugin->exchangeSettings(list, nullptr, nullptr));
}

// Unsaved programs are the editor's business: it asks the user and may refuse.
bool PluginHost::mayExit()
{
    bool mayExit = true;
    QMetaObject::invokeMethod(m_window, "canExit", Qt::DirectConnection,
                              Q_RETURN_ARG(bool, mayExit));
    return mayExit;
}
