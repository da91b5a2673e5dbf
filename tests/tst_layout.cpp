// The records the host reads by memory layout, read here the way the host
// reads them: words copied out of raw bytes at fixed offsets. The host is a
// 32-bit program, so the sizes it knows are those of 4-byte words; a 64-bit
// build has the same records with 8-byte words.

#include <QtTest>

#include <QPluginLoader>
#include <QWidget>

#include <cstring>

#include "hosttables.h"
#include "plugindescriptor.h"
#include "plugininterface.h"
#include "seginterfaces.h"

namespace {

const size_t wordSize = sizeof(quintptr);

// A size the 32-bit host knows, in this build's words.
size_t hostSize(size_t bytesOn32Bit)
{
    return bytesOn32Bit / 4 * wordSize;
}

// The word a host finds at a byte offset from an address.
quintptr wordAt(const void *base, size_t offset)
{
    quintptr word;
    std::memcpy(&word, static_cast<const char *>(base) + offset, sizeof(word));
    return word;
}

// Every byte of token(i) is 0xa0 + i: a read at another word's offset, or
// of a narrower word, cannot produce it.
quintptr token(size_t index)
{
    return ~quintptr(0) / 0xff * (0xa0 + index);
}

void setWord(quintptr &field, size_t index)
{
    field = token(index);
}

template<typename T>
void setWord(T *&field, size_t index)
{
    field = reinterpret_cast<T *>(token(index));
}

// The indexes of the words in which a host reading the raw record does not
// find that index's token: empty when every field is where it belongs.
template<typename Record>
QByteArray misplacedWords(const Record &record)
{
    QByteArray misplaced;
    for (size_t index = 0; index < sizeof(Record) / wordSize; ++index) {
        if (wordAt(&record, index * wordSize) != token(index))
            misplaced += ' ' + QByteArray::number(quint64(index));
    }
    return misplaced;
}

const char *textAt(const void *base, size_t offset)
{
    return reinterpret_cast<const char *>(wordAt(base, offset));
}

} // namespace

class TestLayout : public QObject
{
    Q_OBJECT

private slots:
    void descriptorWords();
    void socketRecordWords();
    void arrayWords();
    void operationRecordWords();
    void typeRecordWords();
    void hostWalksTables();
    void hostFindsDescriptorInModule();
};

void TestLayout::descriptorWords()
{
    QCOMPARE(sizeof(SEGINTERFACES), hostSize(84));

    SEGINTERFACES descriptor;
    setWord(descriptor.title, 0);
    setWord(descriptor.id, 1);
    setWord(descriptor.reserved2, 2);
    setWord(descriptor.group, 3);
    setWord(descriptor.reserved4, 4);
    setWord(descriptor.sockets, 5);
    setWord(descriptor.socketCount, 6);
    setWord(descriptor.instanceNumber, 7);
    setWord(descriptor.flag, 8);
    setWord(descriptor.reserved9, 9);
    setWord(descriptor.reserved10, 10);
    setWord(descriptor.socketObject, 11);
    setWord(descriptor.reserved12, 12);
    setWord(descriptor.runObject, 13);
    setWord(descriptor.reserved14, 14);
    setWord(descriptor.runSlot, 15);
    setWord(descriptor.stopSlot, 16);
    setWord(descriptor.reserved17, 17);
    setWord(descriptor.reserved18, 18);
    setWord(descriptor.description, 19);
    setWord(descriptor.reserved20, 20);
    QCOMPARE(misplacedWords(descriptor), QByteArray());
}

void TestLayout::socketRecordWords()
{
    QCOMPARE(sizeof(SocketRecord), hostSize(24));

    SocketRecord record;
    setWord(record.reserved0, 0);
    setWord(record.name, 1);
    setWord(record.signature, 2);
    setWord(record.flagA, 3);
    setWord(record.flagB, 4);
    setWord(record.reserved5, 5);
    QCOMPARE(misplacedWords(record), QByteArray());
}

void TestLayout::arrayWords()
{
    QCOMPARE(sizeof(ARRAY), hostSize(12));

    ARRAY array;
    setWord(array.first, 0);
    setWord(array.reserved, 1);
    setWord(array.end, 2);
    QCOMPARE(misplacedWords(array), QByteArray());
}

void TestLayout::operationRecordWords()
{
    QCOMPARE(sizeof(OperationRecord), hostSize(36));

    OperationRecord record;
    setWord(record.name, 0);
    for (size_t index = 1; index <= 6; ++index)
        setWord(record.reserved1[index - 1], index);
    setWord(record.secondName, 7);
    setWord(record.reserved8, 8);
    QCOMPARE(misplacedWords(record), QByteArray());
}

void TestLayout::typeRecordWords()
{
    QCOMPARE(sizeof(TypeRecord), hostSize(24));

    TypeRecord record;
    setWord(record.name, 0);
    setWord(record.secondName, 1);
    for (size_t index = 2; index <= 5; ++index)
        setWord(record.reserved2[index - 2], index);
    QCOMPARE(misplacedWords(record), QByteArray());
}

// The host hands over tables as ARRAYs and steps through them by its own
// record sizes; the module walks the same memory through the structs.
void TestLayout::hostWalksTables()
{
    OperationRecord operations[] = {
        { "print", {}, "\xef\xe5\xf7\xe0\xf2\xfc", 0 },
        { "exit", {}, nullptr, 0 },
    };
    TypeRecord types[] = {
        { "int", "\xf6\xe5\xeb\xee\xe5", {} },
    };
    const ARRAY operationTable = { operations, 0, operations + 2 };
    const ARRAY typeTable = { types, 0, types + 1 };

    QList<QByteArray> names;
    const quintptr operationsEnd = wordAt(&operationTable, 2 * wordSize);
    for (quintptr record = wordAt(&operationTable, 0); record < operationsEnd; record += hostSize(36)) {
        const auto *bytes = reinterpret_cast<const char *>(record);
        names << textAt(bytes, 0) << textAt(bytes, 7 * wordSize);
    }
    const quintptr typesEnd = wordAt(&typeTable, 2 * wordSize);
    for (quintptr record = wordAt(&typeTable, 0); record < typesEnd; record += hostSize(24)) {
        const auto *bytes = reinterpret_cast<const char *>(record);
        names << textAt(bytes, 0) << textAt(bytes, wordSize);
    }
    QCOMPARE(names, QList<QByteArray>({ "print", "\xef\xe5\xf7\xe0\xf2\xfc", "exit", QByteArray(),
                                        "int", "\xf6\xe5\xeb\xee\xe5" }));
}

// The host knows neither the plug-in's class nor its size: past the
// PluginInterface sub-object it finds a 32-bit word, then the descriptor,
// and from the descriptor the socket records.
void TestLayout::hostFindsDescriptorInModule()
{
    QPluginLoader loader(QStringLiteral(ZU_MODULE_PATH));
    QObject *root = loader.instance();
    QVERIFY2(root, qPrintable(loader.errorString()));
    auto *plugin = qobject_cast<PluginInterface *>(root);
    QVERIFY(plugin);

    // The sub-object is the virtual table pointer, one word.
    QCOMPARE(sizeof(PluginInterface), wordSize);
    const char *afterInterface = reinterpret_cast<const char *>(plugin) + sizeof(PluginInterface);
    quint32 word;
    std::memcpy(&word, afterInterface, sizeof(word));
    QCOMPARE(word, 0u);

    // The 32-bit word takes a whole word: the descriptor starts one word on.
    const char *descriptor = afterInterface + wordSize;
    QCOMPARE(static_cast<const void *>(pluginDescriptor(plugin)), static_cast<const void *>(descriptor));
    QCOMPARE(QByteArray(textAt(descriptor, wordSize)), QByteArray("zusrceditor"));
    QCOMPARE(QByteArray(textAt(descriptor, 15 * wordSize)), QByteArray("1run()"));
    QCOMPARE(QByteArray(textAt(descriptor, 16 * wordSize)), QByteArray("1stop()"));
    auto *runObject = reinterpret_cast<QObject *>(wordAt(descriptor, 13 * wordSize));
    QVERIFY(runObject && runObject->inherits("EditWindow"));
    QCOMPARE(wordAt(descriptor, 11 * wordSize), quintptr(runObject));

    const quintptr sockets = wordAt(descriptor, 5 * wordSize);
    const quintptr socketCount = wordAt(descriptor, 6 * wordSize);
    QCOMPARE(socketCount, quintptr(11));
    const auto *first = reinterpret_cast<const char *>(sockets);
    const auto *last = reinterpret_cast<const char *>(sockets + (socketCount - 1) * hostSize(24));
    QCOMPARE(QByteArray(textAt(first, wordSize)), QByteArray("ZuTablesStartRequest2Arrays"));
    QCOMPARE(QByteArray(textAt(first, 2 * wordSize)), QByteArray("2tablesRequest()"));
    QCOMPARE(wordAt(first, 3 * wordSize), quintptr(1));
    QCOMPARE(QByteArray(textAt(last, 2 * wordSize)), QByteArray("2editSetting(QString,QString)"));

    // A host disposes of the window and the plug-in object.
    delete static_cast<QWidget *>(runObject);
    delete root;
}

QTEST_MAIN(TestLayout)
#include "tst_layout.moc"
