#include "filewrite.h"

#include <QByteArray>
#include <QSaveFile>

bool writeAndCommit(QSaveFile &file, const QByteArray &bytes)
{
    qint64 written = 0;
    while (written < bytes.size()) {
        const qint64 count = file.write(bytes.constData() + written, bytes.size() - written);
        if (count <= 0)
            return false;
        written += count;
    }
    return file.commit();
}
