#include "codepage.h"

#include <QCoreApplication>
#include <QTextCodec>

QTextCodec *windows1251()
{
    static QTextCodec *const codec = QTextCodec::codecForName("windows-1251");
    return codec;
}

bool toWindows1251(const QString &text, QByteArray *bytes)
{
    QTextCodec::ConverterState state;
    *bytes = windows1251()->fromUnicode(text.constData(), text.size(), &state);
    return state.invalidChars == 0;
}

int firstUnencodable(const QString &text)
{
    // One conversion answers for the common case; only a text that does not
    // convert is searched character by character.
    QByteArray bytes;
    if (toWindows1251(text, &bytes))
        return -1;
    for (int i = 0; i < text.size(); ++i) {
        // Half a surrogate pair passes canEncode() on its own.
        if (text.at(i).isSurrogate() || !windows1251()->canEncode(text.at(i)))
            return i;
    }
    return -1;
}

QString unencodableMessage(const QString &text, int index)
{
    // A character beyond the first plane is a surrogate pair: show it whole.
    const int length = text.at(index).isHighSurrogate() && index + 1 < text.size() ? 2 : 1;
    const QString character = text.mid(index, length);
    const int line = text.leftRef(index).count(QLatin1Char('\n')) + 1;
    return QCoreApplication::translate("codepage",
                                       "Символ «%1» (U+%2) в строке %3 нельзя записать в кодировке windows-1251.")
        .arg(character)
        .arg(QString::number(character.toUcs4().value(0), 16).toUpper().rightJustified(4, QLatin1Char('0')))
        .arg(line);
}
