#ifndef HOSTSOCKETS_H
#define HOSTSOCKETS_H

#include <QHash>
#include <QMetaMethod>
#include <QObject>

#include <thread>

#include "vocabulary.h"

struct SocketRecord;

// The host's end of a plug-in's named sockets. A named signal of the plug-in
// reaches the slot of this object that serves that name, a named slot of the
// plug-in receives the signal of this object of that name, and a record
// without a name is the plug-in's answer slot for the request just before it.
class HostSockets : public QObject
{
    Q_OBJECT

public:
    explicit HostSockets(QObject *parent = nullptr);
    ~HostSockets() override;

    void pair(QObject *socketObject, const SocketRecord *records, int count);

    // Asks the plug-in to open a program or project, as the host's menu does.
    void editProgram(const QString &name);

    // Returns once an answer still being delivered from the worker thread
    // has arrived.
    void waitForAnswers();

    // What the plug-in's table and tool-tip requests are answered from;
    // load it before the plug-in runs.
    Vocabulary &vocabulary();

signals:
    void editProgramRequested(const QString &name);
    void saveFileIfChanged(const QString &name);
    // The plug-in asks for a program or project to be compiled.
    void compileRequested(const QString &fileName);
    void compilerMessage(const QString &text);
    void programsDirChanged(const QString &hostDir, const QString &programsDir);
    // The plug-in asks for the settings editor on its page.
    void settingsRequested(const QString &page);

private slots:
    void answerTables();
    void answerOperToolTip(const QString &name);
    void compile(const QString &fileName);
    void reportCompilerErrors(bool found);
    void editSettings(const QString &page, const QString &);

private:
    void connectSocket(const SocketRecord &record);
    void addAnswer(const char *request, const char *signature);

    QObject *m_socketObject = nullptr;
    QHash<QByteArray, QMetaMethod> m_answers;  // request socket -> answer slot
    Vocabulary m_vocabulary;
    std::thread m_worker;
};

#endif // HOSTSOCKETS_H
