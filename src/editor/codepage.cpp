#include "codepage.h"

#include <QTextCodec>

QTextCodec *windows1251()
{
    static QTextCodec *const codec = QTextCodec::codecForName("windows-1251");
    return codec;
}
