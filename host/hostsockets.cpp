#include "hostsockets.h"

#include <QTextStream>

#include "seginterfaces.h"

namespace {

const char tablesSocket[] = "ZuTablesStartRequest2Arrays";
const char operToolTipSocket[] = "operToolTipQString";

// Socket name -> the member of HostSockets that plays the host's part in it.
const char *hostMember(const char *socketName)
{
    static const QHash<QByteArray, const char *> members = {
        {tablesSocket, SLOT(answerTables())},
        {operToolTipSocket, SLOT(answerOperToolTip(QString))},
        {"_LocalMenuRunSignalQString", SLOT(compile(QString))},
        {"compilerErrorFoundBool", SLOT(reportCompilerErrors(bool))},
        {"editSetting(QString,QString)", SLOT(editSettings(QString,QString))},
        {"_LocalMenuEditSignalQString", SIGNAL(editProgramRequested(QString))},
        {"saveFileIfChanged", SIGNAL(saveFileIfChanged(QString))},
        {"ZuComplieErrorMsgQString", SIGNAL(compilerMessage(QString))},
        {"newSettingsProgramsDirQStringQString", SIGNAL(programsDirChanged(QString,QString))},
    };
    return members.value(socketName);
}

} // namespace

HostSockets::HostSockets(QObject *parent)
    : QObject(parent)
{
}

HostSockets::~HostSockets()
{
    waitForAnswers();
}

void HostSockets::pair(QObject *socketObject, const SocketRecord *records, int count)
{
    m_socketObject = socketObject;
    for (int i = 0; records && i < count; ++i) {
        const SocketRecord &record = records[i];
        if (record.name)
            connectSocket(record);
        else if (i > 0 && records[i - 1].name)
            addAnswer(records[i - 1].name, record.signature);
        else
            qWarning("zuhost: answer socket %s follows no request", record.signature);
    }
}

void HostSockets::editProgram(const QString &name)
{
    emit editProgramRequested(name);
}

void HostSockets::waitForAnswers()
{
    if (m_worker.joinable())
        m_worker.join();
}

Vocabulary &HostSockets::vocabulary()
{
    return m_vocabulary;
}

void HostSockets::answerTables()
{
    const QMetaMethod answer = m_answers.value(tablesSocket);
    if (!answer.isValid())
        return;
    waitForAnswers();
    // From a worker thread, at once: the plug-in keeps an answer that comes
    // before it begins to wait.
    m_worker = std::thread([this, answer] {
        answer.invoke(m_socketObject, Qt::DirectConnection,
                      Q_ARG(ARRAY *, m_vocabulary.operationTable()),
                      Q_ARG(ARRAY *, m_vocabulary.typeTable()));
    });
}

void HostSockets::answerOperToolTip(const QString &name)
{
    const QMetaMethod answer = m_answers.value(operToolTipSocket);
    if (!answer.isValid())
        return;
    // From within the request: the plug-in then has the text without
    // waiting, and no text is shared across threads.
    answer.invoke(m_socketObject, Qt::DirectConnection,
                  Q_ARG(QString, m_vocabulary.toolTip(name)));
}

void HostSockets::compile(const QString &fileName)
{
    QTextStream(stdout) << "zuhost: compile " << fileName << Qt::endl;
    emit compileRequested(fileName);
}

void HostSockets::reportCompilerErrors(bool found)
{
    QTextStream(stdout) << "zuhost: compiler errors found: " << (found ? "yes" : "no") << Qt::endl;
}

// This host opens the whole page; the second text is not used.
void HostSockets::editSettings(const QString &page, const QString &)
{
    emit settingsRequested(page);
}

void HostSockets::connectSocket(const SocketRecord &record)
{
    const char *member = hostMember(record.name);
    if (!member) {
        qWarning("zuhost: no host socket for %s", record.name);
        return;
    }
    const bool pluginSends = record.signature[0] == '0' + QSIGNAL_CODE;
    const bool paired = pluginSends
            ? connect(m_socketObject, record.signature, this, member)
            : connect(this, member, m_socketObject, record.signature);
    if (!paired)
        qWarning("zuhost: cannot pair socket %s", record.name);
}

void HostSockets::addAnswer(const char *request, const char *signature)
{
    const QMetaObject *meta = m_socketObject->metaObject();
    const int index = meta->indexOfSlot(QMetaObject::normalizedSignature(signature + 1));
    if (index < 0) {
        qWarning("zuhost: the plug-in has no answer slot %s", signature + 1);
        return;
    }
    m_answers.insert(request, meta->method(index));
}
