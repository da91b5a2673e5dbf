#ifndef COMPILERRUNNER_H
#define COMPILERRUNNER_H

#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QQueue>
#include <QStringList>
#include <QTimer>

class Vocabulary;

// Compiles what the editor asks for, one request at a time and in the
// order asked: with the compiler command when there is one, or else with
// the built-in checker. Each request ends in one message for the editor,
// sent from the event loop, never from within the request.
class CompilerRunner : public QObject
{
    Q_OBJECT

public:
    explicit CompilerRunner(const Vocabulary &vocabulary, QObject *parent = nullptr);

    // The compiler's program and its first arguments; the file to compile
    // comes last. Empty for the built-in checker.
    void setCommand(const QStringList &command);
    // A compiler still running after this many seconds is killed.
    void setTimeLimit(int seconds);
    bool isIdle() const;

public slots:
    // fileName is relative to the current directory, the editor's programs
    // directory, where the editor has just saved what it names.
    void compile(const QString &fileName);

signals:
    void messageReady(const QString &message);

private:
    struct Request
    {
        QString fileName;
        QString directory;
    };

    void startNext();
    void startCompiler();
    void compilerFinished();
    void compilerFailed(QProcess::ProcessError error);
    void stopCompiler();
    void answer(const QString &message);

    const Vocabulary &m_vocabulary;
    QStringList m_command;
    int m_timeLimit = 30;
    QQueue<Request> m_requests;
    bool m_busy = false;
    Request m_current;
    QPointer<QProcess> m_process;
    QTimer m_deadline;
    bool m_stopped = false;
};

#endif // COMPILERRUNNER_H
