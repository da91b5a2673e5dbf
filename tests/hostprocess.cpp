#include "hostprocess.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>


HostRun runZuHost(const QStringList &arguments, int timeout)
{
    return runProcess(QStringLiteral(ZU_HOST_PATH), arguments, QProcessEnvironment(), timeout);
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
