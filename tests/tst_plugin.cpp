// The module as a host sees it: loaded from its file, recognised through
// PluginInterface, read by layout, and exchanging settings.

#include <QtTest>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDockWidget>
#include <QLibrary>
#include <QMainWindow>
#include <QMetaMethod>
#include <QPlainTextEdit>
#include <QPluginLoader>
#include <QRadioButton>
#include <QTextCodec>

#include "plugindescriptor.h"
#include "plugininterface.h"
#include "seginterfaces.h"
#include "testsupport.h"

Q_DECLARE_METATYPE(SettingsList)
Q_DECLARE_METATYPE(SEGINTERFACES *)

namespace {

QString fromWindows1251(const char *bytes)
{
    return QTextCodec::codecForName("windows-1251")->toUnicode(bytes);
}

struct ExpectedMethod
{
    QMetaMethod::MethodType type;
    QMetaMethod::Access access;
    const char *returnType;
    const char *signature;
    QList<QByteArray> parameterNames;
};

struct ExpectedSetting
{
    const char *key;
    QVariant value;
    QVariant::Type type;
    QString description;
    QVariant range;
    QVariant step;
    QString help;
};

const QString autoSaveHelp = QStringLiteral(
    "Если установлено, то при запуске выполнения или отладки\n"
    "из меню программы на схеме, будет производиться автоматическое\n"
    "сохранение исходного текста, если он изменен. Тогда будет\n"
    "автоматически производиться компиляция перед запуском. Если не\n"
    "установлено, то для сохранения исходного текста надо будет нажимать\n"
    "кнопку для сохранения в редакторе.");

SettingElement hostElement(const QString &key, const QVariant &value)
{
    SettingElement element;
    element.key = key;
    element.value = value;
    element.type = QVariant::Type(value.type());
    return element;
}

} // namespace

class TestPlugin : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void metaDataNamesTheInterface();
    void instanceEntryReturnsSameObject();
    void instanceIsCreatedAgainAfterDeletion();
    void castsThroughClassNameAndInterfaceId();
    void descriptorFollowsInterfaceInLayout();
    void descriptorWords();
    void socketTable_data();
    void socketTable();
    void socketRecordsBelongToInstance();
    void textEditMetaObject();
    void editWindowMetaObject();
    void everySocketSignatureIsOnTheWindow();
    void iconsRegisteredWithModule();

    void exchangeSameThroughInterfaceAndMetaObject();
    void windowSlotForwardsExchange();
    void emptyListGetsFifteenDeclarations();
    void hostValueKeptWithoutClamping();
    void unknownKeyStaysInPlace();
    void duplicateKeyOnlyFirstApplied();
    void searchOptionsApplied();
    void programsDirBecomesCurrent();
    void mainWinOpenFalseLeavesVisibleWindow();
    void mainWinOpenTrueShowsWindow();
    void mainWinStateRestoresState();

    void iconsUnregisteredAtUnload();

private:
    QObject *root();
    PluginInterface *plugin() { return qobject_cast<PluginInterface *>(root()); }
    QMainWindow *window() { return static_cast<QMainWindow *>(pluginDescriptor(plugin())->runObject); }
    SettingsList exchange(const SettingsList &list) { return plugin()->exchangeSettings(list, nullptr, nullptr); }
    void deleteInstance();

    QPluginLoader loader { QStringLiteral(ZU_MODULE_PATH) };
    QTemporaryDir programsDir;
    QString startDir;
};

QObject *TestPlugin::root()
{
    QObject *object = loader.instance();
    if (!object)
        qFatal("cannot load the module: %s", qPrintable(loader.errorString()));
    return object;
}

// The window has no parent and the plug-in object does not own it: a host
// disposes of both.
void TestPlugin::deleteInstance()
{
    QObject *object = loader.instance();
    if (!object)
        return;
    delete window();
    delete object;
}

void TestPlugin::initTestCase()
{
    qRegisterMetaType<SEGINTERFACES *>("SEGINTERFACES*");
    QVERIFY(!QFile::exists(QStringLiteral(":/icons/save-icon.png")));
    QVERIFY(programsDir.isValid());
    startDir = QDir::currentPath();
    QVERIFY(QDir::setCurrent(programsDir.path()));
    // QPluginLoader pins a module in memory by default; a host that unloads
    // it asks for that explicitly.
    loader.setLoadHints(QLibrary::LoadHints());
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
}

void TestPlugin::cleanup()
{
    deleteInstance();
    QDir::setCurrent(programsDir.path());
}

void TestPlugin::metaDataNamesTheInterface()
{
    QCOMPARE(loader.metaData().value(QStringLiteral("IID")).toString(),
             QStringLiteral("org.zu.PluginInterface/1.0"));
    QCOMPARE(loader.metaData().value(QStringLiteral("className")).toString(), QStringLiteral("TextEdit"));
}

void TestPlugin::instanceEntryReturnsSameObject()
{
    QLibrary library(QStringLiteral(ZU_MODULE_PATH));
    auto entry = reinterpret_cast<QObject *(*)()>(library.resolve("qt_plugin_instance"));
    QVERIFY(entry);
    QObject *first = entry();
    QVERIFY(first);
    QCOMPARE(entry(), first);
    QCOMPARE(loader.instance(), first);
    library.unload();
}

void TestPlugin::instanceIsCreatedAgainAfterDeletion()
{
    QLibrary library(QStringLiteral(ZU_MODULE_PATH));
    auto entry = reinterpret_cast<QObject *(*)()>(library.resolve("qt_plugin_instance"));
    QVERIFY(entry);
    QPointer<QObject> first = entry();
    QMainWindow *firstWindow = window();
    delete firstWindow;
    delete first.data();
    QVERIFY(first.isNull());

    QObject *second = entry();
    QVERIFY(second);
    QVERIFY(second->inherits("TextEdit"));
    QCOMPARE(entry(), second);
    QCOMPARE(loader.instance(), second);
    library.unload();
}

void TestPlugin::castsThroughClassNameAndInterfaceId()
{
    QObject *object = root();
    auto *viaInterface = qobject_cast<PluginInterface *>(object);
    QVERIFY(viaInterface);
    QCOMPARE(object->qt_metacast("TextEdit"), static_cast<void *>(object));
    QCOMPARE(object->qt_metacast("PluginInterface"), static_cast<void *>(viaInterface));
    QCOMPARE(object->qt_metacast("org.zu.PluginInterface/1.0"), static_cast<void *>(viaInterface));
    QCOMPARE(object->qt_metacast("QObject"), static_cast<void *>(object));
    QCOMPARE(object->qt_metacast("SomethingElse"), nullptr);
    // The interface is the second base: it does not start the object.
    QVERIFY(static_cast<void *>(viaInterface) != static_cast<void *>(object));
}

void TestPlugin::descriptorFollowsInterfaceInLayout()
{
    auto *head = reinterpret_cast<PluginObjectHead *>(reinterpret_cast<char *>(plugin()) + sizeof(PluginInterface));
    QCOMPARE(head->word, 0u);
    QCOMPARE(&head->descriptor, pluginDescriptor(plugin()));
    // The address the window reports when it stops is this copy's.
    QSignalSpy dead(window(), SIGNAL(pluginDead(SEGINTERFACES*)));
    QVERIFY(dead.isValid());
    bool stopped = false;
    QVERIFY(QMetaObject::invokeMethod(window(), "stop", Q_RETURN_ARG(bool, stopped)));
    QVERIFY(stopped);
    QCOMPARE(dead.count(), 1);
    QCOMPARE(dead.first().first().value<SEGINTERFACES *>(), pluginDescriptor(plugin()));
}

void TestPlugin::descriptorWords()
{
    const SEGINTERFACES *d = pluginDescriptor(plugin());
    const auto *words = reinterpret_cast<const quintptr *>(d);

    QCOMPARE(fromWindows1251(d->title), QStringLiteral("Редактор исходных текстов Zu"));
    // One byte a letter: the host decodes windows-1251.
    QCOMPARE(qstrlen(d->title), uint(QStringLiteral("Редактор исходных текстов Zu").size()));
    QCOMPARE(QByteArray(d->id), QByteArray("zusrceditor"));
    QCOMPARE(fromWindows1251(d->group), QStringLiteral("Системные"));
    QVERIFY(d->sockets);
    QCOMPARE(d->socketCount, quintptr(11));
    QCOMPARE(d->instanceNumber, quintptr(0));
    QCOMPARE(d->flag, quintptr(1));
    QVERIFY(d->socketObject);
    QCOMPARE(d->socketObject, d->runObject);
    QVERIFY(d->runObject->inherits("EditWindow"));
    QVERIFY(!static_cast<QWidget *>(d->runObject)->isVisible());
    QVERIFY(!static_cast<QWidget *>(d->runObject)->parent());
    QCOMPARE(QByteArray(d->runSlot), QByteArray("1run()"));
    QCOMPARE(QByteArray(d->stopSlot), QByteArray("1stop()"));
    QCOMPARE(fromWindows1251(d->description),
             QStringLiteral("Редактор исходных текстов, с подсветкой синтаксиса"));
    for (int unused : { 2, 4, 9, 10, 12, 14, 17, 18, 20 })
        QCOMPARE(words[unused], quintptr(0));
}

void TestPlugin::socketTable_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<int>("flagA");
    QTest::addColumn<int>("flagB");

    QTest::newRow("0") << QByteArray("ZuTablesStartRequest2Arrays") << QByteArray("2tablesRequest()") << 1 << 1;
    QTest::newRow("1") << QByteArray() << QByteArray("1tablesAnswer( ARRAY*, ARRAY* )") << 0 << 0;
    QTest::newRow("2") << QByteArray("operToolTipQString") << QByteArray("2operToolTipRequest(QString)") << 1 << 1;
    QTest::newRow("3") << QByteArray() << QByteArray("1operToolTipAnswer(QString)") << 0 << 0;
    QTest::newRow("4") << QByteArray("_LocalMenuRunSignalQString") << QByteArray("2tryToCompile( QString )") << 0 << 0;
    QTest::newRow("5") << QByteArray("saveFileIfChanged") << QByteArray("1saveFileIfChanged(QString)") << 0 << 0;
    QTest::newRow("6") << QByteArray("ZuComplieErrorMsgQString") << QByteArray("1parseMessage(QString)") << 0 << 0;
    QTest::newRow("7") << QByteArray("newSettingsProgramsDirQStringQString")
                       << QByteArray("1newSettingsProgramsDir(QString,QString)") << 0 << 0;
    QTest::newRow("8") << QByteArray("_LocalMenuEditSignalQString") << QByteArray("1addProgListAndEdit(QString)") << 0 << 0;
    QTest::newRow("9") << QByteArray("compilerErrorFoundBool") << QByteArray("2compilerErrorFound(bool)") << 1 << 0;
    QTest::newRow("10") << QByteArray("editSetting(QString,QString)") << QByteArray("2editSetting(QString,QString)") << 0 << 0;
}

void TestPlugin::socketTable()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, signature);
    QFETCH(int, flagA);
    QFETCH(int, flagB);

    const int row = QString::fromLatin1(QTest::currentDataTag()).toInt();
    const SocketRecord &record = pluginDescriptor(plugin())->sockets[row];
    QCOMPARE(record.reserved0, quintptr(0));
    if (name.isNull())
        QCOMPARE(record.name, nullptr);
    else
        QCOMPARE(QByteArray(record.name), name);
    QCOMPARE(QByteArray(record.signature), signature);
    QCOMPARE(record.flagA, quintptr(flagA));
    QCOMPARE(record.flagB, quintptr(flagB));
    QCOMPARE(record.reserved5, quintptr(0));
}

void TestPlugin::socketRecordsBelongToInstance()
{
    SEGINTERFACES *first = pluginDescriptor(plugin());
    const char *originalName = first->sockets[4].name;
    const char *originalSignature = first->sockets[4].signature;
    // A host may rewrite the records of its instance.
    first->sockets[4].name = "rewrittenByHost";
    first->sockets[4].flagA = 7;

    deleteInstance();
    SEGINTERFACES *second = pluginDescriptor(plugin());
    QVERIFY(second->sockets != nullptr);
    QCOMPARE(QByteArray(second->sockets[4].name), QByteArray(originalName));
    QCOMPARE(second->sockets[4].signature, originalSignature);
    QCOMPARE(second->sockets[4].flagA, quintptr(0));
}

void TestPlugin::textEditMetaObject()
{
    const QMetaObject *meta = root()->metaObject();
    QCOMPARE(QByteArray(meta->className()), QByteArray("TextEdit"));
    const QList<ExpectedMethod> expected {
        { QMetaMethod::Signal, QMetaMethod::Public, "void", "changeVariant(QString,QVariant,bool,bool)",
          { "key", "value", "sync", "change" } },
        { QMetaMethod::Signal, QMetaMethod::Public, "void", "changeVariant(QString,QVariant,bool)",
          { "key", "value", "sync" } },
        { QMetaMethod::Signal, QMetaMethod::Public, "void", "changeVariant(QString,QVariant)", { "key", "value" } },
        { QMetaMethod::Slot, QMetaMethod::Public, "SettingsList",
          "exchangeSettings(SettingsList,QString*,QString*)", { "", "", "" } },
    };
    QCOMPARE(meta->methodCount() - meta->methodOffset(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        const QMetaMethod method = meta->method(meta->methodOffset() + i);
        QCOMPARE(method.methodSignature(), QByteArray(expected[i].signature));
        QCOMPARE(method.methodType(), expected[i].type);
        QCOMPARE(method.access(), expected[i].access);
        QCOMPARE(QByteArray(method.typeName()), QByteArray(expected[i].returnType));
        QCOMPARE(method.parameterNames(), expected[i].parameterNames);
    }
}

void TestPlugin::editWindowMetaObject()
{
    using M = QMetaMethod;
    const QList<QByteArray> none;
    auto unnamed = [](int count) {
        QList<QByteArray> names;
        while (count-- > 0)
            names << QByteArray();
        return names;
    };
    const QList<ExpectedMethod> expected {
        { M::Signal, M::Public, "void", "tablesRequest()", none },
        { M::Signal, M::Public, "void", "pluginDead(SEGINTERFACES*)", unnamed(1) },
        { M::Signal, M::Public, "void", "changeVariant(QString,QVariant,bool,bool)", { "s", "v", "b", "change" } },
        { M::Signal, M::Public, "void", "changeVariant(QString,QVariant,bool)", { "s", "v", "b" } },
        { M::Signal, M::Public, "void", "changeVariant(QString,QVariant)", { "s", "v" } },
        { M::Signal, M::Public, "void", "tryToCompile(QString)", { "filename" } },
        { M::Signal, M::Public, "void", "compilerErrorFound(bool)", unnamed(1) },
        { M::Signal, M::Public, "void", "editSetting(QString,QString)", unnamed(2) },
        { M::Signal, M::Public, "void", "operToolTipRequest(QString)", unnamed(1) },
        { M::Slot, M::Public, "void", "tablesAnswer(ARRAY*,ARRAY*)", unnamed(2) },
        { M::Slot, M::Public, "void", "tabChanged(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "tabChanged(QWidget*)", unnamed(1) },
        { M::Slot, M::Public, "void", "tabClose(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "tabClose(QString)", unnamed(1) },
        { M::Slot, M::Public, "void", "curProgChanged(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "curProjChanged(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "curProgPrjChanged(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "dirChanged(QString)", { "s" } },
        { M::Slot, M::Public, "void", "dirChanged()", none },
        { M::Slot, M::Public, "void", "progRenamed(QListWidgetItem*)", unnamed(1) },
        { M::Slot, M::Public, "void", "nameEditClosed(QWidget*,QAbstractItemDelegate::EndEditHint)", unnamed(2) },
        { M::Slot, M::Public, "void", "addConsoleErrMsg(uint)", unnamed(1) },
        { M::Slot, M::Public, "void", "run()", none },
        { M::Slot, M::Public, "bool", "stop()", none },
        { M::Slot, M::Public, "void", "exchangeSettings(SettingsList,QString*,QString*)", unnamed(3) },
        { M::Slot, M::Public, "void", "switchOrLoad(QString)", unnamed(1) },
        { M::Slot, M::Public, "void", "addProgListAndEdit(QString)", unnamed(1) },
        { M::Slot, M::Public, "void", "parseMessage(QString)", unnamed(1) },
        { M::Slot, M::Public, "void", "zupselected(bool,QString)", unnamed(2) },
        { M::Slot, M::Public, "void", "newSettingsProgramsDir(QString,QString)", unnamed(2) },
        { M::Slot, M::Public, "void", "storeCursorToHistory(QString,int)", unnamed(2) },
        { M::Slot, M::Public, "void", "cursorPrevPosition(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "cursorNextPosition(int)", unnamed(1) },
        { M::Slot, M::Public, "void", "saveFileIfChanged(QString)", unnamed(1) },
        { M::Slot, M::Public, "void", "saveEntireProject()", none },
        { M::Slot, M::Public, "void", "operToolTipAnswer(QString)", unnamed(1) },
        { M::Slot, M::Public, "bool", "canExit()", none },
        { M::Slot, M::Private, "void", "on_editAllPrjButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_downInPrjButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_upInPrjButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_addprjButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_removeProgPrjButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_newProgButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_delProgButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_editButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_renameButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_renamePrjButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_programsList_itemActivated(QListWidgetItem*)", { "item" } },
        { M::Slot, M::Private, "void", "on_projectsList_itemActivated(QListWidgetItem*)", { "item" } },
        { M::Slot, M::Private, "void", "on_currentProjectList_itemActivated(QListWidgetItem*)", { "item" } },
        { M::Slot, M::Private, "void", "onItemEntered(QListWidgetItem*)", { "item" } },
        { M::Slot, M::Private, "void", "on_compileProgramButton_clicked()", none },
        { M::Slot, M::Private, "void", "hideSearch()", none },
        { M::Slot, M::Private, "void", "searchRequested()", none },
        { M::Slot, M::Private, "void", "replaceRequested()", none },
        { M::Slot, M::Private, "void", "replaceAllRequested()", none },
        { M::Slot, M::Private, "void", "on_seacrhButton_toggled(bool)", { "checked" } },
        { M::Slot, M::Private, "void", "on_pushButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_settingsButton_clicked()", none },
        { M::Slot, M::Private, "void", "on_debugProjButton_clicked()", none },
    };
    QCOMPARE(expected.size(), 60);

    const QMetaObject *meta = window()->metaObject();
    QCOMPARE(QByteArray(meta->className()), QByteArray("EditWindow"));
    QCOMPARE(QByteArray(meta->superClass()->className()), QByteArray("QMainWindow"));
    QCOMPARE(meta->methodCount() - meta->methodOffset(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        const QMetaMethod method = meta->method(meta->methodOffset() + i);
        const QByteArray where = QByteArray::number(i) + ": " + expected[i].signature;
        QVERIFY2(method.methodSignature() == expected[i].signature, where.constData());
        QVERIFY2(method.methodType() == expected[i].type, where.constData());
        QVERIFY2(method.access() == expected[i].access, where.constData());
        QVERIFY2(QByteArray(method.typeName()) == expected[i].returnType, where.constData());
        QVERIFY2(method.parameterNames() == expected[i].parameterNames, where.constData());
    }
}

// A host hands each signature straight to QObject::connect: every one must
// resolve on the socket object after Qt's normalisation.
void TestPlugin::everySocketSignatureIsOnTheWindow()
{
    const SEGINTERFACES *d = pluginDescriptor(plugin());
    const QMetaObject *meta = d->socketObject->metaObject();
    for (quintptr i = 0; i < d->socketCount; ++i) {
        const char *signature = d->sockets[i].signature;
        const QByteArray normalized = QMetaObject::normalizedSignature(signature + 1);
        if (signature[0] == '2')
            QVERIFY2(meta->indexOfSignal(normalized) >= 0, signature);
        else
            QVERIFY2(meta->indexOfSlot(normalized) >= 0, signature);
    }
    QVERIFY(d->runObject->metaObject()->indexOfSlot(d->runSlot + 1) >= 0);
    QVERIFY(d->runObject->metaObject()->indexOfSlot(d->stopSlot + 1) >= 0);
}

void TestPlugin::iconsRegisteredWithModule()
{
    for (const char *name : { "new24.png", "icon-site-ru-0560.png", "Rename24.png", "add-project.png",
                              "delete2.png", "new-project.png", "debug.png", "down-green-24.png",
                              "up-green-24.png", "save-icon.png", "saveas-icon.png", "undo.png",
                              "redo.png", "settings24.png", "Properties24.png" }) {
        const QString path = QStringLiteral(":/icons/") + QLatin1String(name);
        const QImage image(path);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QCOMPARE(image.size(), QSize(24, 24));
    }
}

void TestPlugin::exchangeSameThroughInterfaceAndMetaObject()
{
    SettingsList hostList { hostElement(QStringLiteral("maxLines"), 120) };
    const SettingsList viaInterface = exchange(hostList);

    deleteInstance();
    SettingsList viaMetaObject;
    QVERIFY(QMetaObject::invokeMethod(root(), "exchangeSettings", Qt::DirectConnection,
                                      Q_RETURN_ARG(SettingsList, viaMetaObject),
                                      Q_ARG(SettingsList, hostList),
                                      Q_ARG(QString *, nullptr), Q_ARG(QString *, nullptr)));
    QCOMPARE(viaMetaObject.size(), viaInterface.size());
    for (int i = 0; i < viaInterface.size(); ++i) {
        QCOMPARE(viaMetaObject[i].key, viaInterface[i].key);
        QCOMPARE(viaMetaObject[i].value, viaInterface[i].value);
        QCOMPARE(viaMetaObject[i].description, viaInterface[i].description);
    }
    // Both calls apply the values too.
    auto *console = window()->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    QCOMPARE(console->document()->maximumBlockCount(), 120);
}

void TestPlugin::windowSlotForwardsExchange()
{
    SettingsList hostList { hostElement(QStringLiteral("maxLines"), 77) };
    QVERIFY(QMetaObject::invokeMethod(window(), "exchangeSettings", Qt::DirectConnection,
                                      Q_ARG(SettingsList, hostList),
                                      Q_ARG(QString *, nullptr), Q_ARG(QString *, nullptr)));
    auto *console = window()->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    QCOMPARE(console->document()->maximumBlockCount(), 77);
}

void TestPlugin::emptyListGetsFifteenDeclarations()
{
    const QByteArray state = window()->saveState();
    const QVariant none(0);
    const QList<ExpectedSetting> expected {
        { "AutoComplete", true, QVariant::Bool, QStringLiteral(".Автоматическое дополнение ключевых слов"),
          none, none, QString() },
        { "AutoSaveOnExec", true, QVariant::Bool,
          QStringLiteral(".Автоматическое сохранение при выполнении и отладке"), none, none, autoSaveHelp },
        { "programsDir", QStringLiteral("."), QVariant::String, QString(), none, none, QString() },
        { "maxLines", 100, QVariant::Int, QStringLiteral(".Количество строк в сообщениях об ошибках"),
          QVariantList { 50, 500 }, 10, QStringLiteral("Сохраняются от 50 до 500 строк (по-умолчанию 100).") },
        { "maxPosHistoryLength", 50, QVariant::Int, QStringLiteral(".Количество запоминаемых позиций курсора"),
          QVariantList { 20, 200 }, 10, QStringLiteral("Число в диапазоне от 20 до 200 (по-умолчанию 50)") },
        { "inprogram", true, QVariant::Bool, QString(), none, none, QString() },
        { "entireproject", false, QVariant::Bool, QString(), none, none, QString() },
        { "ignorecase", false, QVariant::Bool, QString(), none, none, QString() },
        { "wholeword", false, QVariant::Bool, QString(), none, none, QString() },
        { "searchFor", QStringList(), QVariant::StringList, QString(), none, none, QString() },
        { "replaceTo", QStringList(), QVariant::StringList, QString(), none, none, QString() },
        { "openedlist", QStringList(), QVariant::StringList, QString(), none, none, QString() },
        { "openedtab", QString(), QVariant::String, QString(), none, none, QString() },
        { "MainWinState", state, QVariant::ByteArray, QString(), none, none, QString() },
        { "MainWinOpen", false, QVariant::Bool, QString(), none, none, QString() },
    };

    const SettingsList list = exchange(SettingsList());
    QCOMPARE(list.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        const SettingElement &element = list.at(i);
        QCOMPARE(element.key, QString::fromLatin1(expected[i].key));
        QCOMPARE(element.value, expected[i].value);
        QCOMPARE(element.value.type(), expected[i].type);
        QCOMPARE(element.type, expected[i].type);
        QCOMPARE(element.description, expected[i].description);
        QCOMPARE(element.range, expected[i].range);
        QCOMPARE(element.step, expected[i].step);
        QCOMPARE(element.help, expected[i].help);
        QVERIFY(element.extra.isEmpty());
    }
}

void TestPlugin::hostValueKeptWithoutClamping()
{
    const SettingsList list = exchange({ hostElement(QStringLiteral("maxLines"), 7) });
    const int at = indexOfKey(list, QStringLiteral("maxLines"));
    QCOMPARE(at, 0);
    QCOMPARE(list[at].value, QVariant(7));
    QCOMPARE(list[at].range, QVariant(QVariantList { 50, 500 }));
    QCOMPARE(list[at].step, QVariant(10));
    QCOMPARE(list[at].description, QStringLiteral(".Количество строк в сообщениях об ошибках"));
    auto *console = window()->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    QCOMPARE(console->document()->maximumBlockCount(), 7);
    QCOMPARE(list.size(), 15);
}

void TestPlugin::unknownKeyStaysInPlace()
{
    SettingElement unknown = hostElement(QStringLiteral("someOtherKey"), QStringLiteral("kept"));
    unknown.description = QStringLiteral("host's own");
    const SettingsList list = exchange({ hostElement(QStringLiteral("wholeword"), true), unknown,
                                         hostElement(QStringLiteral("AutoComplete"), false) });
    QCOMPARE(list.size(), 16);
    QCOMPARE(list[0].key, QStringLiteral("wholeword"));
    QCOMPARE(list[1].key, QStringLiteral("someOtherKey"));
    QCOMPARE(list[1].value, QVariant(QStringLiteral("kept")));
    QCOMPARE(list[1].description, QStringLiteral("host's own"));
    QCOMPARE(list[2].key, QStringLiteral("AutoComplete"));
    QCOMPARE(list[2].value, QVariant(false));
    // The declarations the host did not have follow in declaration order.
    QCOMPARE(list[3].key, QStringLiteral("AutoSaveOnExec"));
    QCOMPARE(list[4].key, QStringLiteral("programsDir"));
    QCOMPARE(list.last().key, QStringLiteral("MainWinOpen"));
}

void TestPlugin::duplicateKeyOnlyFirstApplied()
{
    const SettingsList list = exchange({ hostElement(QStringLiteral("maxLines"), 60),
                                         hostElement(QStringLiteral("maxLines"), 70) });
    QCOMPARE(list[0].value, QVariant(60));
    QCOMPARE(list[0].description, QStringLiteral(".Количество строк в сообщениях об ошибках"));
    QCOMPARE(list[1].value, QVariant(70));
    QVERIFY(list[1].description.isEmpty());
    auto *console = window()->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    QCOMPARE(console->document()->maximumBlockCount(), 60);
}

void TestPlugin::searchOptionsApplied()
{
    auto *panel = window()->findChild<QDialog *>(QStringLiteral("SearchReplace"));
    QVERIFY(panel);
    auto *searchFor = panel->findChild<QComboBox *>(QStringLiteral("searchFor"));
    searchFor->addItem(QStringLiteral("stale"));

    exchange({ hostElement(QStringLiteral("entireproject"), true),
               hostElement(QStringLiteral("inprogram"), false),
               hostElement(QStringLiteral("ignorecase"), true),
               hostElement(QStringLiteral("wholeword"), true),
               hostElement(QStringLiteral("searchFor"), QStringList { "alpha", "beta" }),
               hostElement(QStringLiteral("replaceTo"), QStringList { "gamma" }) });

    QVERIFY(panel->findChild<QRadioButton *>(QStringLiteral("entireproject"))->isChecked());
    QVERIFY(!panel->findChild<QRadioButton *>(QStringLiteral("inprogram"))->isChecked());
    QVERIFY(panel->findChild<QCheckBox *>(QStringLiteral("ignorecase"))->isChecked());
    QVERIFY(panel->findChild<QCheckBox *>(QStringLiteral("wholeword"))->isChecked());
    QCOMPARE(searchFor->count(), 2);
    QCOMPARE(searchFor->itemText(0), QStringLiteral("alpha"));
    QCOMPARE(searchFor->itemText(1), QStringLiteral("beta"));
    auto *replaceTo = panel->findChild<QComboBox *>(QStringLiteral("replaceTo"));
    QCOMPARE(replaceTo->count(), 1);
    QCOMPARE(replaceTo->itemText(0), QStringLiteral("gamma"));
}

void TestPlugin::programsDirBecomesCurrent()
{
    QTemporaryDir other;
    QVERIFY(other.isValid());
    exchange({ hostElement(QStringLiteral("programsDir"), other.path()) });
    QCOMPARE(QFileInfo(QDir::currentPath()).canonicalFilePath(), QFileInfo(other.path()).canonicalFilePath());
}

void TestPlugin::mainWinOpenFalseLeavesVisibleWindow()
{
    window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(window()));
    exchange({ hostElement(QStringLiteral("MainWinOpen"), false) });
    QVERIFY(window()->isVisible());
}

void TestPlugin::mainWinOpenTrueShowsWindow()
{
    QVERIFY(!window()->isVisible());
    exchange({ hostElement(QStringLiteral("MainWinOpen"), true) });
    QVERIFY(window()->isVisible());
}

void TestPlugin::mainWinStateRestoresState()
{
    // A dock widget makes the state observable: its area is part of it.
    auto *dock = new QDockWidget(window());
    dock->setObjectName(QStringLiteral("probeDock"));
    window()->addDockWidget(Qt::LeftDockWidgetArea, dock);
    const QByteArray leftState = window()->saveState();
    window()->addDockWidget(Qt::RightDockWidgetArea, dock);
    QCOMPARE(window()->dockWidgetArea(dock), Qt::RightDockWidgetArea);

    exchange({ hostElement(QStringLiteral("MainWinState"), leftState) });
    QCOMPARE(window()->dockWidgetArea(dock), Qt::LeftDockWidgetArea);
}

void TestPlugin::iconsUnregisteredAtUnload()
{
    QVERIFY(QFile::exists(QStringLiteral(":/icons/save-icon.png")));
    deleteInstance();
    QVERIFY(loader.unload());
    QVERIFY(!QFile::exists(QStringLiteral(":/icons/save-icon.png")));
    QDir::setCurrent(startDir);
}

QTEST_MAIN(TestPlugin)
#include "tst_plugin.moc"
