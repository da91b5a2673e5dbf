#ifndef CODEPAGE_H
#define CODEPAGE_H

class QByteArray;
class QString;
class QTextCodec;

// Programs, project files and the texts exchanged raw with the host are
// windows-1251, whatever the user's locale.
QTextCodec *windows1251();

// The bytes of text in windows-1251; false, and bytes unspecified, when the
// code page cannot hold one of its characters.
bool toWindows1251(const QString &text, QByteArray *bytes);

// The index of the first character of text that windows-1251 cannot hold,
// or -1 when it holds them all.
int firstUnencodable(const QString &text);

// Names, for the user, the character of text at index and its line.
QString unencodableMessage(const QString &text, int index);

#endif // CODEPAGE_H
