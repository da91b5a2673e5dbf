#include "messagewriter.h"

namespace MessageWriter {

QString readyToRun()
{
    return QStringLiteral("\nProgram ready to run\n");
}

// The caret line keeps the source line's tabs before the column, so that
// the caret stands under the error however wide a tab is shown, and its
// index in the line is the column the editor marks.
QString locatedError(const QString &fileName, int line, int column, int code,
                     const QString &description, const QString &sourceLine)
{
    QString caretLine(column, QLatin1Char(' '));
    for (int i = 0; i < column && i < sourceLine.size(); ++i) {
        if (sourceLine.at(i) == QLatin1Char('\t'))
            caretLine[i] = QLatin1Char('\t');
    }
    caretLine += QLatin1Char('^');
    return QStringLiteral("\nIn line #%1 of file %2\nCode %3\n%4\n%5\n%6\n")
            .arg(QString::number(line), fileName, QString::number(code), description,
                 sourceLine, caretLine);
}

QString systemError(const QString &action, int errorNumber, const QString &subject)
{
    return QStringLiteral("\nError while %1 (%2) File: %3\n")
            .arg(action, QString::number(errorNumber), subject);
}

} // namespace MessageWriter
