// Any text as a program or project name: a name the check accepts is one
// file name inside the programs directory, whose name with its extension
// fits 200 bytes in windows-1251.
//
// The first byte chooses the extension and how the other bytes make the
// name: as UTF-8, as windows-1251, or as UTF-16 code units, which may hold
// NUL and half a surrogate pair.

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTextCodec>

#include <algorithm>
#include <cstdint>

#include "codepage.h"
#include "programname.h"

static QString nameOfBytes(int decoding, const QByteArray &bytes)
{
    switch (decoding) {
    case 0:
        return QString::fromUtf8(bytes);
    case 1:
        return windows1251()->toUnicode(bytes);
    default:
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const char *const extension = data[0] & 1 ? ".zup" : ".zu";
    // A copy: UTF-16 code units must be aligned.
    const QByteArray bytes(reinterpret_cast<const char *>(data) + 1, int(size) - 1);
    const QString name = nameOfBytes((data[0] >> 1) % 3, bytes);

    const QString problem = nameProblem(name, extension);
    if (!problem.isEmpty())
        return 0;

    const QByteArray shown = name.toUtf8().toPercentEncoding(" .");
    const char *why = nullptr;
    if (name.isEmpty())
        why = "empty";
    else if (name == QLatin1String(".") || name == QLatin1String(".."))
        why = "a directory's own name";
    else if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        why = "holds a slash or backslash";
    else if (std::any_of(name.begin(), name.end(),
                         [](QChar ch) { return ch.isNull() || ch.category() == QChar::Other_Control; }))
        why = "holds NUL or a control character";
    else if (windows1251()->fromUnicode(name + QLatin1String(extension)).size() > 200)
        why = "longer than 200 bytes in windows-1251 with its extension";
    else if (QFile::encodeName(name + QLatin1String(extension)).size() > 200)
        why = "longer than 200 bytes in the file system's encoding with its extension";
    if (why)
        qFatal("accepted name \"%s\" (extension %s) is %s", shown.constData(), extension, why);
    return 0;
}
