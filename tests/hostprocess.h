#ifndef HOSTPROCESS_H
#define HOSTPROCESS_H

#include <QByteArray>
#include <QJsonObject>
#include <QStringList>

#include "testsupport.h"

// zuhost run as a process on the offscreen platform.
using HostRun = ProcessRun;

// Runs zuhost until it exits by itself, killing it after timeout ms.
HostRun runZuHost(const QStringList &arguments, int timeout = 30000);

// The arguments for the real module, a settings file of its own and the
// programs directory.
QStringList hostArguments(const QString &settingsFile, const QString &programsDir);

// The JSON object zuhost's --report wrote, empty when there is none.
QJsonObject readReport(const QString &path);

// Writes an executable shell script.
bool writeScript(const QString &path, const QByteArray &body);

#endif // HOSTPROCESS_H
