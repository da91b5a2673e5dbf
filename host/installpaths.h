#ifndef INSTALLPATHS_H
#define INSTALLPATHS_H

#include <QString>

// Where zuhost finds the module and the sample vocabulary when the command
// line names none. In the build directory the module lies beside the
// binary and the vocabulary is the source tree's. Installed, both are found
// relative to the binary's own directory, so that a tree that was moved or
// unpacked into a scratch root (dpkg -x) finds its own files.
class InstallPaths
{
public:
    explicit InstallPaths(const QString &binaryDir);

    QString module() const;
    QString vocabulary() const;

private:
    QString installedPath(const char *relativePath) const;

    QString m_binaryDir;
    bool m_inBuildTree;
};

#endif // INSTALLPATHS_H
