#ifndef VOCABULARY_H
#define VOCABULARY_H

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

#include "hosttables.h"

// The language's operations, with their tool tips, and its types, read from
// a vocabulary file and kept as the tables the host hands to the plug-in.
// The file format is described in examples/vocabulary.
class Vocabulary
{
public:
    struct Operation
    {
        QString name;
        QString secondName;  // empty when absent
        QString toolTip;
    };

    struct Type
    {
        QString name;
        QString secondName;  // empty when absent
    };

    Vocabulary() = default;

    // Replaces the vocabulary with the file's. A malformed line is skipped
    // and described in errors(); false only if the file cannot be read.
    bool load(const QString &path);
    // The same with the file's bytes at hand; source names them in errors().
    void loadBytes(const QByteArray &bytes, const QString &source);
    QString errorString() const;
    // "file:line: reason" for each skipped line of the last load.
    QStringList errors() const;

    const QVector<Operation> &operations() const;
    const QVector<Type> &types() const;

    // The tool tip of the operation with this first or second name, since
    // the editor shows and completes both; empty for any other name.
    QString toolTip(const QString &name) const;

    // The tables as the plug-in walks them: windows-1251 names, null where
    // there is no second name. Valid until the next load or destruction.
    ARRAY *operationTable();
    ARRAY *typeTable();

private:
    Q_DISABLE_COPY(Vocabulary)

    void clear();
    // Each returns why the entry is malformed, or an empty string once added.
    QString addLine(const QString &line);
    QString addOperation(const QStringList &names, const QString &toolTip);
    QString addType(const QStringList &names);
    void buildTables();

    QVector<Operation> m_operations;
    QVector<Type> m_types;
    QHash<QString, int> m_operationByName;  // first and second names
    QSet<QString> m_typeNames;
    QString m_errorString;
    QStringList m_errors;

    // What the tables point into.
    QVector<QByteArray> m_encodedNames;
    std::vector<OperationRecord> m_operationRecords;
    std::vector<TypeRecord> m_typeRecords;
    ARRAY m_operationTable = {};
    ARRAY m_typeTable = {};
};

#endif // VOCABULARY_H
