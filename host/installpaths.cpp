#include "installpaths.h"

#include <QDir>
#include <QFileInfo>

// ZUHOST_MODULE_FILE is the module's file name; ZUHOST_INSTALLED_MODULE_DIR
// and ZUHOST_INSTALLED_DATA_DIR are the installed module and data folders
// relative to the installed binary's; ZUHOST_DEFAULT_VOCABULARY is the
// source tree's sample. All come from host/CMakeLists.txt.

InstallPaths::InstallPaths(const QString &binaryDir)
    : m_binaryDir(binaryDir)
    , m_inBuildTree(QFileInfo::exists(QDir(binaryDir).filePath(QStringLiteral(ZUHOST_MODULE_FILE))))
{
}

QString InstallPaths::module() const
{
    if (m_inBuildTree)
        return QDir(m_binaryDir).filePath(QStringLiteral(ZUHOST_MODULE_FILE));
    return installedPath(ZUHOST_INSTALLED_MODULE_DIR "/" ZUHOST_MODULE_FILE);
}

QString InstallPaths::vocabulary() const
{
    if (m_inBuildTree)
        return QStringLiteral(ZUHOST_DEFAULT_VOCABULARY);
    return installedPath(ZUHOST_INSTALLED_DATA_DIR "/vocabulary");
}

QString InstallPaths::installedPath(const char *relativePath) const
{
    return QDir::cleanPath(QDir(m_binaryDir).filePath(QString::fromUtf8(relativePath)));
}
