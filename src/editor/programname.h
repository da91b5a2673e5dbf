#ifndef PROGRAMNAME_H
#define PROGRAMNAME_H

#include <QString>

// A program or project name is one file name inside the programs directory,
// once its extension (".zu" or ".zup") is added. Returns why name is not
// one, for the user, or an empty string when it is.
QString nameProblem(const QString &name, const char *extension);

// The text of a box that refuses a name: the name, then the problem.
QString refusedNameText(const QString &name, const QString &problem);

#endif // PROGRAMNAME_H
