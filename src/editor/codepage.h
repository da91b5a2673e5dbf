#ifndef CODEPAGE_H
#define CODEPAGE_H

class QString;
class QTextCodec;

// Programs, project files and the texts exchanged raw with the host are
// windows-1251, whatever the user's locale.
QTextCodec *windows1251();

// The index of the first character of text that windows-1251 cannot hold,
// or -1 when it holds them all.
int firstUnencodable(const QString &text);

// Names, for the user, the character of text at index and its line.
QString unencodableMessage(const QString &text, int index);

#endif // CODEPAGE_H
