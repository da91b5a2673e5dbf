// Any bytes as a vocabulary file: every name kept is non-empty and fit for
// the tables, and the tables handed to the plug-in say exactly what
// operations() and types() say, tool tips included.

#include <QByteArray>
#include <QTextCodec>

#include <algorithm>
#include <cstdint>

#include "hosttables.h"
#include "vocabulary.h"

namespace {

QTextCodec *windows1251()
{
    static QTextCodec *const codec = QTextCodec::codecForName("windows-1251");
    return codec;
}

// A name of a record as the plug-in reads it: a windows-1251 C string.
QString recordName(const char *name)
{
    return windows1251()->toUnicode(name);
}

void checkName(const QString &name, const QString &secondName, const char *what)
{
    if (name.isEmpty())
        qFatal("%s kept without a name", what);
    if (name == secondName)
        qFatal("%s \"%s\" kept with itself as its second name", what, qPrintable(name));
}

// One record against the entry it was built from.
void checkRecord(const char *name, const char *secondName, const QString &entryName,
                 const QString &entrySecondName, const char *what)
{
    if (!name || recordName(name) != entryName)
        qFatal("%s \"%s\" has the record name \"%s\"", what, qPrintable(entryName),
               name ? qPrintable(recordName(name)) : "(null)");
    if (entrySecondName.isEmpty() ? secondName != nullptr
                                  : !secondName || recordName(secondName) != entrySecondName)
        qFatal("%s \"%s\" with second name \"%s\" has the record second name \"%s\"", what,
               qPrintable(entryName), qPrintable(entrySecondName),
               secondName ? qPrintable(recordName(secondName)) : "(null)");
}

template <typename Record>
int recordCount(const ARRAY *table)
{
    return int(static_cast<const Record *>(table->end) - static_cast<const Record *>(table->first));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Vocabulary vocabulary;
    vocabulary.loadBytes(QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size)),
                         QStringLiteral("input"));

    const QVector<Vocabulary::Operation> &operations = vocabulary.operations();
    const ARRAY *operationTable = vocabulary.operationTable();
    if (recordCount<OperationRecord>(operationTable) != operations.size())
        qFatal("%d operations, %d operation records", operations.size(),
               recordCount<OperationRecord>(operationTable));
    const auto *operationRecords = static_cast<const OperationRecord *>(operationTable->first);
    for (int i = 0; i < operations.size(); ++i) {
        const Vocabulary::Operation &operation = operations.at(i);
        checkName(operation.name, operation.secondName, "operation");
        if (std::any_of(operation.name.begin(), operation.name.end(), [](QChar ch) { return ch.unicode() >= 0x80; }))
            qFatal("operation \"%s\" kept with a first name that is not ASCII", qPrintable(operation.name));
        checkRecord(operationRecords[i].name, operationRecords[i].secondName, operation.name,
                    operation.secondName, "operation");
        // Names are unique, so either name finds this operation's tool tip.
        if (vocabulary.toolTip(operation.name) != operation.toolTip
            || (!operation.secondName.isEmpty() && vocabulary.toolTip(operation.secondName) != operation.toolTip))
            qFatal("operation \"%s\": a name finds another tool tip", qPrintable(operation.name));
    }

    const QVector<Vocabulary::Type> &types = vocabulary.types();
    const ARRAY *typeTable = vocabulary.typeTable();
    if (recordCount<TypeRecord>(typeTable) != types.size())
        qFatal("%d types, %d type records", types.size(), recordCount<TypeRecord>(typeTable));
    const auto *typeRecords = static_cast<const TypeRecord *>(typeTable->first);
    for (int i = 0; i < types.size(); ++i) {
        const Vocabulary::Type &type = types.at(i);
        checkName(type.name, type.secondName, "type");
        checkRecord(typeRecords[i].name, typeRecords[i].secondName, type.name, type.secondName, "type");
    }
    return 0;
}
