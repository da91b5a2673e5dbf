#include "hostprocess.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>

#include "testsupport.h"

HostRun runZuHost(const QStringList &arguments, int timeout)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(ZU_HOST_PATH), arguments);

    HostRun run;
    run.finished = process.waitForFinished(timeout) && process.exitStatus() == QProcess::NormalExit;
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(5000);
    }
    run.exitCode = process.exitCode();
    run.output = process.readAllStandardOutput();
    run.errors = process.readAllStandardError();
    return run;
}

QStringList hostArguments(const QString &settingsFile, const QString &programsDir)
{
    return {QStringLiteral("--module"), QStringLiteral(ZU_MODULE_PATH),
            QStringLiteral("--settings"), settingsFile,
            QStringLiteral("--dir"), programsDir};
}

QJsonObject readReport(const QString &path)
{
    return QJsonDocument::fromJson(fileBytes(path)).object();
}

bool writeScript(const QString &path, const QByteArray &body)
{
    return writeFile(path, "#!/bin/sh\n" + body)
            && QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
