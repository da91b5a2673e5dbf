#ifndef MESSAGEWRITER_H
#define MESSAGEWRITER_H

#include <QString>

// The texts the host sends the editor in answer to a compile request. The
// editor tells the kinds apart by how they begin and reads a located error
// line by line and word by word, so each keeps to its layout exactly.
namespace MessageWriter {

QString readyToRun();

// Lines count from 1, columns from 0, in characters of sourceLine, the
// line as the program holds it. The description is one line of plain text.
QString locatedError(const QString &fileName, int line, int column, int code,
                     const QString &description, const QString &sourceLine);

// "Error while <action> (<errno>) File: <subject>": the editor shows the C
// library's text for the number and everything after "File: ".
QString systemError(const QString &action, int errorNumber, const QString &subject);

} // namespace MessageWriter

#endif // MESSAGEWRITER_H
