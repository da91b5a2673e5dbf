#ifndef FILEWRITE_H
#define FILEWRITE_H

class QByteArray;
class QSaveFile;

// Writes bytes into a save file opened unbuffered, and commits it. A write
// cut short (a full disk, a file size limit) is repeated for the rest, so
// that the file's error string names what stopped it; false then, and the
// old file is untouched.
bool writeAndCommit(QSaveFile &file, const QByteArray &bytes);

#endif // FILEWRITE_H
