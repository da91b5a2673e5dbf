// The host's settings editor: the dialog on its own, and inside a PluginHost
// that runs the real module and opens it from the editor's settings button.

#include <QtTest>

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QDir>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>

#include "pluginhost.h"
#include "settingsdialog.h"
#include "settingsstore.h"
#include "testsupport.h"

namespace {

const QString autoCompleteLabel = QStringLiteral("Автоматическое дополнение ключевых слов");
const QString maxLinesLabel = QStringLiteral("Количество строк в сообщениях об ошибках");
const QString maxLinesHelp = QStringLiteral("Сохраняются от 50 до 500 строк (по-умолчанию 100).");
const QString compilerLabel = QStringLiteral("Путь к компилятору");
const QString compilerHelp = QStringLiteral("Программа, которой компилируются исходные тексты.");

SettingElement setting(const QString &key, const QVariant &value, QVariant::Type type,
                       const QString &description = QString(), const QVariant &range = 0,
                       const QVariant &step = 0, const QString &help = QString())
{
    return SettingElement{key, value, type, description, range, step, help, QString()};
}

// User settings of the three kinds the dialog edits, one of a kind it has no
// editor for, and settings kept for the plug-in only.
SettingsList pluginLikeSettings()
{
    return {
        setting(QStringLiteral("AutoComplete"), true, QVariant::Bool,
                QLatin1Char('.') + autoCompleteLabel),
        setting(QStringLiteral("programsDir"), QStringLiteral("."), QVariant::String),
        setting(QStringLiteral("maxLines"), 100, QVariant::Int, QLatin1Char('.') + maxLinesLabel,
                QVariantList{50, 500}, 10, maxLinesHelp),
        setting(QStringLiteral("recent"), QStringList{QStringLiteral("hello")}, QVariant::StringList,
                QStringLiteral(".Недавние программы")),
        setting(QStringLiteral("compiler"), QStringLiteral("/usr/bin/zuc"), QVariant::String,
                QLatin1Char('.') + compilerLabel, 0, 0, compilerHelp),
        setting(QStringLiteral("inprogram"), false, QVariant::Bool),
    };
}

// Every field, for comparing whole elements.
QVariantList fields(const SettingElement &element)
{
    return {element.key, element.value, int(element.type), element.description,
            element.range, element.step, element.help, element.extra};
}

QVariant storedValue(const SettingsStore &store, const QString &key)
{
    const SettingsList list = store.list();
    const int index = indexOfKey(list, key);
    return index < 0 ? QVariant() : list.at(index).value;
}

QAbstractButton *dialogButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    auto *buttons = dialog->findChild<QDialogButtonBox *>();
    return buttons ? buttons->button(which) : nullptr;
}

// The host as zuhost runs it, on the real module, with a settings file and
// an empty programs directory of its own.
struct RunningHost
{
    RunningHost()
        : store(dir.filePath(QStringLiteral("host.ini")))
        , host(&store)
    {
    }

    bool start()
    {
        store.setValue(QStringLiteral("programsDir"), dir.path());
        if (!dir.isValid() || !host.load(QStringLiteral(ZU_MODULE_PATH))) {
            qWarning("%s", qPrintable(host.errorString()));
            return false;
        }
        host.start();
        return QTest::qWaitForWindowExposed(host.window());
    }

    QPlainTextEdit *console() const
    {
        return host.window()->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    }

    QPushButton *settingsButton() const
    {
        return host.window()->findChild<QPushButton *>(QStringLiteral("settingsButton"));
    }

    QTemporaryDir dir;
    SettingsStore store;
    PluginHost host;
};

} // namespace

class TestHostSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void showsOnlyDottedSettings();
    void editorsShowValuesRangesAndHelp();
    void acceptReturnsEditedValues();
    void untouchedOutOfRangeValueKept();
    void editedOutOfRangeValueTaken();

    void okAppliesAndStoresSettings();
    void cancelChangesNothing();

    void storeWritesOnlyOnSync();
    void storeSyncGivesUpOnUntakableLock();
    void storeMakesTheDirectoryOfItsFile();
    void storeSaysWhenItsDirectoryCannotBeMade();

private:
    // Calls `answer` on the settings dialog once it is the active modal
    // widget, however it was opened; returns at once.
    void answerSettingsDialog(const std::function<void(SettingsDialog *)> &answer);

    QTimer m_answerTimer;
    std::function<void(SettingsDialog *)> m_answer;
};

void TestHostSettings::initTestCase()
{
    QVERIFY(QFile::exists(QStringLiteral(ZU_MODULE_PATH)));
    m_answerTimer.setInterval(10);
    connect(&m_answerTimer, &QTimer::timeout, this, [this] {
        auto *dialog = qobject_cast<SettingsDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        m_answerTimer.stop();
        m_answer(dialog);
    });
}

void TestHostSettings::cleanup()
{
    m_answerTimer.stop();
}

void TestHostSettings::showsOnlyDottedSettings()
{
    SettingsDialog dialog(QStringLiteral("page.0"), pluginLikeSettings());

    // Each label names its editor; the editors carry the keys.
    QStringList rows;
    const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        QVERIFY2(label->buddy(), qPrintable(label->text()));
        rows << label->text() + QLatin1Char('=') + label->buddy()->objectName();
    }
    QCOMPARE(rows, (QStringList{autoCompleteLabel + QStringLiteral("=AutoComplete"),
                                maxLinesLabel + QStringLiteral("=maxLines"),
                                compilerLabel + QStringLiteral("=compiler")}));
    for (const char *key : {"programsDir", "recent", "inprogram"})
        QVERIFY2(!dialog.findChild<QWidget *>(QLatin1String(key)), key);
    QVERIFY(dialog.windowTitle().contains(QStringLiteral("page.0")));
}

void TestHostSettings::editorsShowValuesRangesAndHelp()
{
    SettingsDialog dialog(QStringLiteral("page.0"), pluginLikeSettings());

    auto *autoComplete = dialog.findChild<QCheckBox *>(QStringLiteral("AutoComplete"));
    QVERIFY(autoComplete);
    QVERIFY(autoComplete->isChecked());

    auto *maxLines = dialog.findChild<QSpinBox *>(QStringLiteral("maxLines"));
    QVERIFY(maxLines);
    QCOMPARE(maxLines->minimum(), 50);
    QCOMPARE(maxLines->maximum(), 500);
    QCOMPARE(maxLines->singleStep(), 10);
    QCOMPARE(maxLines->value(), 100);
    QCOMPARE(maxLines->toolTip(), maxLinesHelp);

    auto *compiler = dialog.findChild<QLineEdit *>(QStringLiteral("compiler"));
    QVERIFY(compiler);
    QCOMPARE(compiler->text(), QStringLiteral("/usr/bin/zuc"));
    QCOMPARE(compiler->toolTip(), compilerHelp);
}

void TestHostSettings::acceptReturnsEditedValues()
{
    const SettingsList given = pluginLikeSettings();
    SettingsDialog dialog(QStringLiteral("page.0"), given);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    auto *autoComplete = dialog.findChild<QCheckBox *>(QStringLiteral("AutoComplete"));
    auto *maxLines = dialog.findChild<QSpinBox *>(QStringLiteral("maxLines"));
    auto *compiler = dialog.findChild<QLineEdit *>(QStringLiteral("compiler"));
    QVERIFY(autoComplete && maxLines && compiler);
    QTest::keyClick(autoComplete, Qt::Key_Space);
    maxLines->selectAll();
    QTest::keyClicks(maxLines, QStringLiteral("250"));
    compiler->clear();
    QTest::keyClicks(compiler, QStringLiteral("zuc"));
    QTest::mouseClick(dialogButton(&dialog, QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));

    SettingsList expected = given;
    expected[0].value = false;
    expected[2].value = 250;
    expected[4].value = QStringLiteral("zuc");
    const SettingsList edited = dialog.settings();
    QCOMPARE(edited.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(fields(edited.at(i)), fields(expected.at(i)));
}

// The spin box can only show a value of its range; what it shows in place of
// a stored one outside is not the user's choice.
void TestHostSettings::untouchedOutOfRangeValueKept()
{
    SettingsList given = pluginLikeSettings();
    given[2].value = 7;
    SettingsDialog dialog(QStringLiteral("page.0"), given);
    auto *maxLines = dialog.findChild<QSpinBox *>(QStringLiteral("maxLines"));
    QVERIFY(maxLines);
    QCOMPARE(maxLines->value(), 50);

    dialog.accept();
    QCOMPARE(dialog.settings().at(2).value, QVariant(7));
}

void TestHostSettings::editedOutOfRangeValueTaken()
{
    SettingsList given = pluginLikeSettings();
    given[2].value = 7;
    SettingsDialog dialog(QStringLiteral("page.0"), given);
    auto *maxLines = dialog.findChild<QSpinBox *>(QStringLiteral("maxLines"));
    QVERIFY(maxLines);

    maxLines->setValue(60);
    dialog.accept();
    QCOMPARE(dialog.settings().at(2).value, QVariant(60));
}

void TestHostSettings::okAppliesAndStoresSettings()
{
    RunningHost running;
    QVERIFY(running.start());
    QPlainTextEdit *console = running.console();
    QPushButton *button = running.settingsButton();
    QVERIFY(console && button);
    QCOMPARE(console->document()->maximumBlockCount(), 100);
    const int storedCount = running.store.list().size();

    QString title;
    answerSettingsDialog([&title](SettingsDialog *dialog) {
        title = dialog->windowTitle();
        dialog->findChild<QSpinBox *>(QStringLiteral("maxLines"))->setValue(250);
        dialogButton(dialog, QDialogButtonBox::Ok)->click();
    });
    QTest::mouseClick(button, Qt::LeftButton);

    // The plug-in applied the value at once, and the host stored it.
    QTRY_COMPARE_WITH_TIMEOUT(console->document()->maximumBlockCount(), 250, 5000);
    QVERIFY2(title.contains(QStringLiteral("Редактор исходных текстов Zu.0")), qPrintable(title));
    QCOMPARE(storedValue(running.store, QStringLiteral("maxLines")), QVariant(250));
    QCOMPARE(running.store.list().size(), storedCount);
}

void TestHostSettings::cancelChangesNothing()
{
    RunningHost running;
    QVERIFY(running.start());
    QPlainTextEdit *console = running.console();
    QPushButton *button = running.settingsButton();
    QVERIFY(console && button);

    bool answered = false;
    answerSettingsDialog([&answered](SettingsDialog *dialog) {
        dialog->findChild<QSpinBox *>(QStringLiteral("maxLines"))->setValue(300);
        dialogButton(dialog, QDialogButtonBox::Cancel)->click();
        answered = true;
    });
    QTest::mouseClick(button, Qt::LeftButton);

    QTRY_VERIFY_WITH_TIMEOUT(answered, 5000);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(console->document()->maximumBlockCount(), 100);
    QCOMPARE(storedValue(running.store, QStringLiteral("maxLines")), QVariant(100));
}

void TestHostSettings::storeWritesOnlyOnSync()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString fileName = dir.filePath(QStringLiteral("store.ini"));
    {
        SettingsStore store(fileName);
        store.setList(pluginLikeSettings());
        store.setValue(QStringLiteral("maxLines"), 250);
        store.setValue(QStringLiteral("extraKey"), QStringList {QStringLiteral("one")});
    }
    QVERIFY(!QFile::exists(fileName));

    SettingsStore store(fileName);
    store.setList(pluginLikeSettings());
    store.setValue(QStringLiteral("maxLines"), 250);
    store.setValue(QStringLiteral("extraKey"), QStringList {QStringLiteral("one")});
    QVERIFY2(store.sync(), qPrintable(store.errorString()));

    const SettingsStore reread(fileName);
    const SettingsList list = reread.list();
    QCOMPARE(list.size(), pluginLikeSettings().size() + 1);
    QCOMPARE(storedValue(reread, QStringLiteral("maxLines")), QVariant(250));
    // A list of one string comes back as a list, with its declared help text.
    QCOMPARE(storedValue(reread, QStringLiteral("extraKey")),
             QVariant(QStringList {QStringLiteral("one")}));
    const int compiler = indexOfKey(list, QStringLiteral("compiler"));
    QVERIFY(compiler >= 0);
    QCOMPARE(list.at(compiler).help, compilerHelp);
}

// QSettings waits for ever on a lock it cannot take; the store gives up.
void TestHostSettings::storeSyncGivesUpOnUntakableLock()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString fileName = dir.filePath(QStringLiteral("locked.ini"));
    QVERIFY(QDir().mkdir(fileName + QStringLiteral(".lock")));

    SettingsStore store(fileName);
    store.setLockTimeout(200);
    store.setValue(QStringLiteral("maxLines"), 250);
    QVERIFY(!store.lockable());
    QVERIFY(!store.sync());
    QVERIFY2(store.errorString().contains(QStringLiteral("locked.ini.lock was not taken within 200 ms")),
             qPrintable(store.errorString()));
    QVERIFY(!QFile::exists(fileName));

    QVERIFY(QDir().rmdir(fileName + QStringLiteral(".lock")));
    QVERIFY2(store.sync(), qPrintable(store.errorString()));
    QCOMPARE(storedValue(SettingsStore(fileName), QStringLiteral("maxLines")), QVariant(250));
}

// A first run: nothing has made the settings' directory yet.
void TestHostSettings::storeMakesTheDirectoryOfItsFile()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString fileName = dir.filePath(QStringLiteral("config/zuhost/zuhost.ini"));

    SettingsStore store(fileName);
    store.setValue(QStringLiteral("maxLines"), 250);
    QVERIFY2(store.lockable(), qPrintable(store.errorString()));
    QVERIFY2(store.sync(), qPrintable(store.errorString()));
    QCOMPARE(storedValue(SettingsStore(fileName), QStringLiteral("maxLines")), QVariant(250));
}

void TestHostSettings::storeSaysWhenItsDirectoryCannotBeMade()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString file = dir.filePath(QStringLiteral("file"));
    QVERIFY(writeFile(file, "not a directory\n"));
    const QString fileName = file + QStringLiteral("/zuhost/zuhost.ini");

    SettingsStore store(fileName);
    QVERIFY(!store.lockable());
    QVERIFY(!store.sync());
    QCOMPARE(store.errorString(), QStringLiteral("the directory %1/zuhost cannot be made").arg(file));
}

void TestHostSettings::answerSettingsDialog(const std::function<void(SettingsDialog *)> &answer)
{
    m_answer = answer;
    m_answerTimer.start();
}

QTEST_MAIN(TestHostSettings)

#include "tst_hostsettings.moc"
