#ifndef CODEPAGE_H
#define CODEPAGE_H

class QTextCodec;

// Programs, project files and the texts exchanged raw with the host are
// windows-1251, whatever the user's locale.
QTextCodec *windows1251();

#endif // CODEPAGE_H
