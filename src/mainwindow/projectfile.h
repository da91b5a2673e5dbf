#ifndef PROJECTFILE_H
#define PROJECTFILE_H

#include <QByteArray>
#include <QStringList>

// The bytes of a project file: the programs it lists, one a line with
// ".zu" after the name, up to its first empty line. CR, LF and CR LF all
// end a line. What follows the list, from that empty line on, is kept as it
// is, so that writing the list back loses nothing a person put there.
class ProjectFile
{
public:
    static ProjectFile fromBytes(const QByteArray &bytes);

    // The list as text, one "NAME.zu" line a program, before the rest.
    QString listText() const;
    // The whole file; the list must be one windows-1251 can hold.
    QByteArray toBytes() const;

    QStringList programs;
    QByteArray rest;
};

#endif // PROJECTFILE_H
