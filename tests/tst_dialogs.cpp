// The two small dialogs driven directly: the new project or program choice
// and the program deletion dialog with its watched directory.

#include <QtTest>

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QEventLoop>
#include <QTimer>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTranslator>

#include "boxanswerer.h"
#include "progdelete.h"
#include "testsupport.h"
#include "zuporzu.h"

namespace {

void clickStandardButton(QWidget *dialog, QDialogButtonBox::StandardButton which)
{
    auto *box = dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QVERIFY(box);
    QPushButton *button = box->button(which);
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
}

// Clicks the button as the user does: from within the running event loop,
// which a deferred deletion of the dialog waits for.
void clickInEventLoop(QWidget *dialog, QDialogButtonBox::StandardButton which)
{
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&loop, dialog, which] {
        clickStandardButton(dialog, which);
        loop.quit();
    });
    loop.exec();
}

// The dialog's own widgets in the order they were made.
QStringList childWidgetNames(const QWidget *dialog)
{
    QStringList names;
    for (const QObject *child : dialog->children()) {
        if (child->isWidgetType())
            names << child->objectName();
    }
    return names;
}

// Answers only for one translation context, recording every context asked.
class ContextTranslator : public QTranslator
{
public:
    explicit ContextTranslator(const char *context) : wanted(context) {}

    bool isEmpty() const override { return false; }

    QString translate(const char *context, const char *sourceText, const char *,
                      int) const override
    {
        contexts.insert(QString::fromLatin1(context));
        if (qstrcmp(context, wanted) != 0)
            return QString();
        return QStringLiteral("T:") + QString::fromUtf8(sourceText);
    }

    mutable QSet<QString> contexts;

private:
    const char *wanted;
};

// Counts the warnings logged while it lives, passing them on as usual.
class WarningCounter
{
public:
    WarningCounter()
    {
        current = this;
        previous = qInstallMessageHandler(handler);
    }
    ~WarningCounter()
    {
        qInstallMessageHandler(previous);
        current = nullptr;
    }

    int count = 0;

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (type != QtDebugMsg && type != QtInfoMsg)
            ++current->count;
        previous(type, context, message);
    }

    static inline WarningCounter *current = nullptr;
    static inline QtMessageHandler previous = nullptr;
};

bool messageBoxShown()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMessageBox *>(widget) && widget->isVisible())
            return true;
    }
    return false;
}

const char *const extensions[] = { ".zu", ".st", ".vn", ".cp" };
const char *const boxNames[] = { "sourceBox", "stringsBox", "varnamesBox", "execBox" };

const QString warningParagraphs[] = {
    QStringLiteral("ВНИМАНИЕ!"),
    QStringLiteral("Удаление исходного текста программы сделает невозможной сборку выполнимой "
                   "программы и проектов, в которой она используется."),
    QStringLiteral("Удаление файла текстовых строк программы сделает невозможным её перевод на "
                   "иностранные языки. Но использовать программу будет можно."),
    QStringLiteral("Удаление файла имен переменных программы затруднит её отладку и "
                   "восстановление исходного текста из выполнимого кода."),
    QStringLiteral("Удаление выполнимого файла программы сделает невозможным её выполнение. Но он "
                   "может быть заново создан из исходного текста или проекта при их наличии."),
};

} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    // New project or program
    void newItemDialogForm();
    void newItemDialogWidgets_data();
    void newItemDialogWidgets();
    void newItemTextsUseTheDialogsTranslationContext();
    void newItemRadioButtonsAreExclusive();
    void newItemOkWithoutChoiceReportsProject();
    void newItemOkAfterChoosingProgramReportsProgram();
    void newItemOkAcceptsAndHides();
    void newItemCancelReportsNothing();
    void newItemEscapeReportsNothing();
    void newItemPassesNameUnchanged_data();
    void newItemPassesNameUnchanged();

    // Program deletion
    void deleteDialogForm();
    void deleteDialogWidgets_data();
    void deleteDialogWidgets();
    void deleteDialogTextsUseTheDialogsTranslationContext();
    void deleteDialogWarningParagraphs();
    void deleteDialogEnablesBoxesOfExistingFiles_data();
    void deleteDialogEnablesBoxesOfExistingFiles();
    void deleteDialogOkWithoutChecksDeletesNothing();
    void deleteDialogOkRemovesExactlyTheCheckedFiles();
    void deleteDialogDisablesBoxOfFileRemovedMeanwhile();
    void deleteDialogEnablesBoxOfFileCreatedMeanwhile();
    void deleteDialogKeepsCheckMarkWhileFileIsAway();
    void deleteDialogUsesTheDirectoryLastFilled();
    void deleteDialogRemovesCheckedFileWhoseBoxIsDisabled();
    void deleteDialogReportsFileThatCannotBeRemoved();
    void deleteDialogDeletesItselfWhenFinished_data();
    void deleteDialogDeletesItselfWhenFinished();

private:
    ProgDelete *makeProgDelete(const QString &name, const QString &dir, QWidget *parent = nullptr);
    QCheckBox *box(const char *name) const;

    QPointer<ProgDelete> progDelete;
};

void TestDialogs::cleanup()
{
    delete progDelete;
}

ProgDelete *TestDialogs::makeProgDelete(const QString &name, const QString &dir, QWidget *parent)
{
    progDelete = new ProgDelete(parent, name, dir);
    return progDelete;
}

QCheckBox *TestDialogs::box(const char *name) const
{
    return progDelete ? progDelete->findChild<QCheckBox *>(QLatin1String(name)) : nullptr;
}

// ---------------------------------------------------------------------------
// New project or program

void TestDialogs::newItemDialogForm()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);

    QCOMPARE(dialog.objectName(), QStringLiteral("zuporzu"));
    QCOMPARE(dialog.size(), QSize(264, 146));
    QCOMPARE(dialog.minimumSize(), QSize(264, 146));
    QCOMPARE(dialog.maximumSize(), QSize(264, 146));
    QVERIFY(dialog.isModal());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
    QCOMPARE(childWidgetNames(&dialog),
             QStringList({ "buttonBox", "radioButton", "radioButton_2", "label" }));

    auto *buttons = dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QVERIFY(buttons);
    QCOMPARE(buttons->orientation(), Qt::Horizontal);
    QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);

    auto *project = dialog.findChild<QRadioButton *>(QStringLiteral("radioButton"));
    auto *program = dialog.findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
    QVERIFY(project);
    QVERIFY(program);
    QVERIFY(project->isChecked());
    QVERIFY(!program->isChecked());
    QVERIFY(project->autoExclusive());
    QVERIFY(program->autoExclusive());
}

void TestDialogs::newItemDialogWidgets_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("pointSize");

    QTest::newRow("buttonBox") << "buttonBox" << "QDialogButtonBox" << QRect(30, 100, 211, 32)
                               << QString() << 0;
    QTest::newRow("radioButton") << "radioButton" << "QRadioButton" << QRect(30, 40, 331, 20)
                                 << "новый проект" << 10;
    QTest::newRow("radioButton_2") << "radioButton_2" << "QRadioButton" << QRect(30, 70, 341, 20)
                                   << "новую программу" << 10;
    QTest::newRow("label") << "label" << "QLabel" << QRect(30, 10, 331, 16) << "Создать:" << 10;
}

void TestDialogs::newItemDialogWidgets()
{
    QFETCH(QString, name);
    QFETCH(QString, className);
    QFETCH(QRect, geometry);
    QFETCH(QString, text);
    QFETCH(int, pointSize);

    zuporzu dialog(QStringLiteral("prog"), nullptr);
    auto *widget = dialog.findChild<QWidget *>(name);
    QVERIFY(widget);
    QCOMPARE(QString::fromLatin1(widget->metaObject()->className()), className);
    QCOMPARE(widget->parentWidget(), &dialog);
    QCOMPARE(widget->geometry(), geometry);
    if (auto *button = qobject_cast<QAbstractButton *>(widget))
        QCOMPARE(button->text(), text);
    if (auto *label = qobject_cast<QLabel *>(widget))
        QCOMPARE(label->text(), text);
    if (pointSize)
        QCOMPARE(widget->font().pointSize(), pointSize);
}

void TestDialogs::newItemTextsUseTheDialogsTranslationContext()
{
    ContextTranslator translator("zuporzu");
    QCoreApplication::installTranslator(&translator);
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    QCoreApplication::removeTranslator(&translator);

    QVERIFY(translator.contexts.contains(QStringLiteral("zuporzu")));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("T:Dialog"));
    auto *label = dialog.findChild<QLabel *>(QStringLiteral("label"));
    QVERIFY(label);
    QCOMPARE(label->text(), QStringLiteral("T:Создать:"));
}

void TestDialogs::newItemRadioButtonsAreExclusive()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *project = dialog.findChild<QRadioButton *>(QStringLiteral("radioButton"));
    auto *program = dialog.findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
    QVERIFY(project);
    QVERIFY(program);

    clickRadio(program);
    QVERIFY(program->isChecked());
    QVERIFY(!project->isChecked());

    clickRadio(project);
    QVERIFY(project->isChecked());
    QVERIFY(!program->isChecked());
}

void TestDialogs::newItemOkWithoutChoiceReportsProject()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    QSignalSpy spy(&dialog, &zuporzu::zupselected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    clickStandardButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toBool(), true);
    QCOMPARE(spy.at(0).at(1).toString(), QStringLiteral("prog"));
}

void TestDialogs::newItemOkAfterChoosingProgramReportsProgram()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    QSignalSpy spy(&dialog, &zuporzu::zupselected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *program = dialog.findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
    QVERIFY(program);

    clickRadio(program);
    QVERIFY(program->isChecked());
    clickStandardButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toBool(), false);
    QCOMPARE(spy.at(0).at(1).toString(), QStringLiteral("prog"));
}

void TestDialogs::newItemOkAcceptsAndHides()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    clickStandardButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(accepted.count(), 1);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
}

void TestDialogs::newItemCancelReportsNothing()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    QSignalSpy spy(&dialog, &zuporzu::zupselected);
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    clickStandardButton(&dialog, QDialogButtonBox::Cancel);

    QCOMPARE(rejected.count(), 1);
    QCOMPARE(spy.count(), 0);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QVERIFY(!dialog.isVisible());
}

void TestDialogs::newItemEscapeReportsNothing()
{
    zuporzu dialog(QStringLiteral("prog"), nullptr);
    QSignalSpy spy(&dialog, &zuporzu::zupselected);
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    QTest::keyClick(&dialog, Qt::Key_Escape);

    QCOMPARE(rejected.count(), 1);
    QCOMPARE(spy.count(), 0);
    QVERIFY(!dialog.isVisible());
}

void TestDialogs::newItemPassesNameUnchanged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("chooseProgram");

    QTest::newRow("empty") << QString() << false;
    QTest::newRow("spaces") << QStringLiteral("имя с пробелами") << true;
    QTest::newRow("parent path") << QStringLiteral("../x") << false;
    QTest::newRow("300 characters") << QString(300, QLatin1Char('n')) << true;
}

void TestDialogs::newItemPassesNameUnchanged()
{
    QFETCH(QString, name);
    QFETCH(bool, chooseProgram);

    zuporzu dialog(name, nullptr);
    QSignalSpy spy(&dialog, &zuporzu::zupselected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    if (chooseProgram) {
        auto *program = dialog.findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
        QVERIFY(program);
        clickRadio(program);
    }

    clickStandardButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toBool(), !chooseProgram);
    QCOMPARE(spy.at(0).at(1).toString(), name);
}

// ---------------------------------------------------------------------------
// Program deletion

void TestDialogs::deleteDialogForm()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());

    QCOMPARE(dialog->objectName(), QStringLiteral("ProgDelete"));
    QCOMPARE(dialog->size(), QSize(640, 500));
    QCOMPARE(dialog->minimumSize(), QSize(640, 500));
    QCOMPARE(dialog->maximumSize(), QSize(640, 500));
    QVERIFY(dialog->isModal());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Dialog"));
    QCOMPARE(childWidgetNames(dialog),
             QStringList({ "buttonBox", "textBrowser", "sourceBox", "stringsBox", "varnamesBox",
                           "execBox", "label", "label_2", "nameLabel", "label_4" }));

    auto *buttons = dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QVERIFY(buttons);
    QCOMPARE(buttons->orientation(), Qt::Horizontal);
    QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);

    auto *nameLabel = dialog->findChild<QLabel *>(QStringLiteral("nameLabel"));
    QVERIFY(nameLabel);
    QCOMPARE(nameLabel->text(), QStringLiteral("prog"));
    QCOMPARE(nameLabel->textInteractionFlags(), Qt::TextInteractionFlags(Qt::NoTextInteraction));

    for (const char *name : boxNames) {
        QVERIFY2(box(name), name);
        QVERIFY2(!box(name)->isChecked(), name);
    }
}

void TestDialogs::deleteDialogWidgets_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("text");

    QTest::newRow("buttonBox") << "buttonBox" << "QDialogButtonBox" << QRect(210, 450, 201, 32)
                               << QString();
    QTest::newRow("textBrowser") << "textBrowser" << "QTextBrowser" << QRect(340, 60, 281, 361)
                                 << QString();
    QTest::newRow("sourceBox") << "sourceBox" << "QCheckBox" << QRect(20, 110, 301, 20)
                               << "Исходный текст программы (расширение .zu)";
    QTest::newRow("stringsBox") << "stringsBox" << "QCheckBox" << QRect(20, 180, 311, 20)
                                << "Текстовые строки программы (расширение .st)";
    QTest::newRow("varnamesBox") << "varnamesBox" << "QCheckBox" << QRect(20, 260, 281, 20)
                                 << "Файл имен переменных (расширение .vn)";
    QTest::newRow("execBox") << "execBox" << "QCheckBox" << QRect(20, 330, 311, 20)
                             << "Исполнимый файл программы (расширение .cp)";
    QTest::newRow("label") << "label" << "QLabel" << QRect(20, 60, 311, 16)
                           << "Выберите файлы программы которые надо удалить";
    QTest::newRow("label_2") << "label_2" << "QLabel" << QRect(20, 10, 131, 16)
                             << "Удаляется программа";
    QTest::newRow("nameLabel") << "nameLabel" << "QLabel" << QRect(20, 30, 181, 16)
                               << "имя программы";
    QTest::newRow("label_4") << "label_4" << "QLabel" << QRect(20, 390, 281, 31)
                             << "Восстановить удаленные файлы можно будет\n"
                                "только средствами операционной системы";
}

void TestDialogs::deleteDialogWidgets()
{
    QFETCH(QString, name);
    QFETCH(QString, className);
    QFETCH(QRect, geometry);
    QFETCH(QString, text);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    ProgDelete *dialog = makeProgDelete(QStringLiteral("имя программы"), dir.path());
    auto *widget = dialog->findChild<QWidget *>(name);
    QVERIFY(widget);
    QCOMPARE(QString::fromLatin1(widget->metaObject()->className()), className);
    QCOMPARE(widget->parentWidget(), dialog);
    QCOMPARE(widget->geometry(), geometry);
    if (auto *button = qobject_cast<QAbstractButton *>(widget))
        QCOMPARE(button->text(), text);
    if (auto *label = qobject_cast<QLabel *>(widget))
        QCOMPARE(label->text(), text);
}

void TestDialogs::deleteDialogTextsUseTheDialogsTranslationContext()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    ContextTranslator translator("ProgDelete");
    QCoreApplication::installTranslator(&translator);
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    QCoreApplication::removeTranslator(&translator);

    QVERIFY(translator.contexts.contains(QStringLiteral("ProgDelete")));
    QCOMPARE(dialog->windowTitle(), QStringLiteral("T:Dialog"));
    QVERIFY(box("execBox"));
    QCOMPARE(box("execBox")->text(), QStringLiteral("T:Исполнимый файл программы (расширение .cp)"));
    // The program's name is data, not a text to translate.
    auto *nameLabel = dialog->findChild<QLabel *>(QStringLiteral("nameLabel"));
    QVERIFY(nameLabel);
    QCOMPARE(nameLabel->text(), QStringLiteral("prog"));
}

void TestDialogs::deleteDialogWarningParagraphs()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    auto *browser = dialog->findChild<QTextBrowser *>(QStringLiteral("textBrowser"));
    QVERIFY(browser);

    const QString plain = browser->toPlainText();
    int from = 0;
    for (const QString &paragraph : warningParagraphs) {
        const int at = plain.indexOf(paragraph, from);
        QVERIFY2(at >= 0, qPrintable(paragraph));
        from = at + paragraph.size();
    }

    // Five paragraphs in 8 pt with an empty paragraph between each two. The
    // text takes its family from the page's default font, given in the
    // markup's body rather than by the document's own default font.
    const QTextDocument *document = browser->document();
    QCOMPARE(document->blockCount(), 9);
    for (int i = 0; i < document->blockCount(); ++i) {
        const QTextBlock block = document->findBlockByNumber(i);
        if (i % 2) {
            QVERIFY2(block.text().isEmpty(), qPrintable(block.text()));
            QCOMPARE(block.charFormat().fontPointSize(), 8.0);
            continue;
        }
        QCOMPARE(block.text(), warningParagraphs[i / 2]);
        const QTextCharFormat format = block.begin().fragment().charFormat();
        QCOMPARE(format.fontPointSize(), 8.0);
        QCOMPARE(format.fontFamily(), QStringLiteral("MS Shell Dlg 2"));
    }
}

void TestDialogs::deleteDialogEnablesBoxesOfExistingFiles_data()
{
    QTest::addColumn<QStringList>("present");

    QTest::newRow("source only") << QStringList({ ".zu" });
    QTest::newRow("all four") << QStringList({ ".zu", ".st", ".vn", ".cp" });
    QTest::newRow("strings and executable") << QStringList({ ".st", ".cp" });
    QTest::newRow("none") << QStringList();
}

void TestDialogs::deleteDialogEnablesBoxesOfExistingFiles()
{
    QFETCH(QStringList, present);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const QString &extension : qAsConst(present))
        QVERIFY(writeFile(dir.filePath(QStringLiteral("prog") + extension), "x"));
    // Another program's and a longer name's files must not count.
    for (const char *extension : extensions) {
        QVERIFY(writeFile(dir.filePath(QStringLiteral("other") + QLatin1String(extension)), "x"));
        QVERIFY(writeFile(dir.filePath(QStringLiteral("prog2") + QLatin1String(extension)), "x"));
    }

    makeProgDelete(QStringLiteral("prog"), dir.path());

    for (int i = 0; i < 4; ++i) {
        QVERIFY(box(boxNames[i]));
        QCOMPARE(box(boxNames[i])->isEnabled(), present.contains(QLatin1String(extensions[i])));
        QVERIFY(!box(boxNames[i])->isChecked());
    }
}

void TestDialogs::deleteDialogOkWithoutChecksDeletesNothing()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const char *extension : extensions)
        QVERIFY(writeFile(dir.filePath(QStringLiteral("prog") + QLatin1String(extension)), "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    QSignalSpy finished(dialog, &QDialog::finished);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));

    clickStandardButton(dialog, QDialogButtonBox::Ok);

    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), int(QDialog::Accepted));
    for (const char *extension : extensions)
        QVERIFY(QFile::exists(dir.filePath(QStringLiteral("prog") + QLatin1String(extension))));
}

void TestDialogs::deleteDialogOkRemovesExactlyTheCheckedFiles()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const char *extension : extensions) {
        QVERIFY(writeFile(dir.filePath(QStringLiteral("prog") + QLatin1String(extension)), "x"));
        QVERIFY(writeFile(dir.filePath(QStringLiteral("other") + QLatin1String(extension)), "x"));
    }
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    QSignalSpy finished(dialog, &QDialog::finished);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QVERIFY(box("sourceBox"));
    QVERIFY(box("execBox"));

    clickCheck(box("sourceBox"));
    clickCheck(box("execBox"));
    QVERIFY(box("sourceBox")->isChecked());
    QVERIFY(box("execBox")->isChecked());
    clickStandardButton(dialog, QDialogButtonBox::Ok);

    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), int(QDialog::Accepted));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files, QDir::Name),
             QStringList({ "other.cp", "other.st", "other.vn", "other.zu", "prog.st", "prog.vn" }));
}

void TestDialogs::deleteDialogDisablesBoxOfFileRemovedMeanwhile()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const char *extension : extensions)
        QVERIFY(writeFile(dir.filePath(QStringLiteral("prog") + QLatin1String(extension)), "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    QSignalSpy finished(dialog, &QDialog::finished);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    for (const char *name : { "sourceBox", "stringsBox", "varnamesBox" }) {
        QVERIFY(box(name));
        clickCheck(box(name));
        QVERIFY(box(name)->isChecked());
    }

    QVERIFY(QFile::remove(dir.filePath(QStringLiteral("prog.st"))));

    QTRY_VERIFY_WITH_TIMEOUT(!box("stringsBox")->isEnabled(), 5000);
    QVERIFY(box("stringsBox")->isChecked());
    QVERIFY(box("sourceBox")->isEnabled());
    QVERIFY(box("varnamesBox")->isEnabled());
    QVERIFY(box("execBox")->isEnabled());

    WarningCounter warnings;
    clickStandardButton(dialog, QDialogButtonBox::Ok);

    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), int(QDialog::Accepted));
    QCOMPARE(warnings.count, 0);
    QVERIFY(!messageBoxShown());
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList({ "prog.cp" }));
}

void TestDialogs::deleteDialogEnablesBoxOfFileCreatedMeanwhile()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(writeFile(dir.filePath(QStringLiteral("prog.zu")), "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QVERIFY(box("execBox"));
    QVERIFY(!box("execBox")->isEnabled());

    QVERIFY(writeFile(dir.filePath(QStringLiteral("prog.cp")), "x"));

    QTRY_VERIFY_WITH_TIMEOUT(box("execBox")->isEnabled(), 5000);
    QVERIFY(box("sourceBox")->isEnabled());
    QVERIFY(!box("stringsBox")->isEnabled());
    QVERIFY(!box("varnamesBox")->isEnabled());
    QVERIFY(!box("execBox")->isChecked());
}

void TestDialogs::deleteDialogKeepsCheckMarkWhileFileIsAway()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString source = dir.filePath(QStringLiteral("prog.zu"));
    QVERIFY(writeFile(source, "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QVERIFY(box("sourceBox"));
    clickCheck(box("sourceBox"));

    QVERIFY(QFile::remove(source));
    QTRY_VERIFY_WITH_TIMEOUT(!box("sourceBox")->isEnabled(), 5000);
    QVERIFY(box("sourceBox")->isChecked());

    QVERIFY(writeFile(source, "x"));
    QTRY_VERIFY_WITH_TIMEOUT(box("sourceBox")->isEnabled(), 5000);
    QVERIFY(box("sourceBox")->isChecked());

    clickStandardButton(dialog, QDialogButtonBox::Ok);
    QVERIFY(!QFile::exists(source));
}

void TestDialogs::deleteDialogUsesTheDirectoryLastFilled()
{
    QTemporaryDir first;
    QTemporaryDir second;
    QVERIFY(first.isValid());
    QVERIFY(second.isValid());
    QVERIFY(writeFile(first.filePath(QStringLiteral("prog.zu")), "x"));
    QVERIFY(writeFile(second.filePath(QStringLiteral("prog.zu")), "x"));
    QVERIFY(writeFile(second.filePath(QStringLiteral("prog.vn")), "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), first.path());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QVERIFY(box("varnamesBox"));
    QVERIFY(!box("varnamesBox")->isEnabled());

    dialog->fillBoxes(second.path());
    QVERIFY(box("varnamesBox")->isEnabled());
    clickCheck(box("sourceBox"));
    clickCheck(box("varnamesBox"));
    clickStandardButton(dialog, QDialogButtonBox::Ok);

    QVERIFY(QFile::exists(first.filePath(QStringLiteral("prog.zu"))));
    QVERIFY(QDir(second.path()).entryList(QDir::Files).isEmpty());
}

// Only the directory given at construction is watched, so a file that
// appears in another directory after a refill leaves its box disabled.
void TestDialogs::deleteDialogRemovesCheckedFileWhoseBoxIsDisabled()
{
    QTemporaryDir watched;
    QTemporaryDir other;
    QVERIFY(watched.isValid());
    QVERIFY(other.isValid());
    QVERIFY(writeFile(watched.filePath(QStringLiteral("prog.st")), "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), watched.path());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    QVERIFY(box("stringsBox"));
    clickCheck(box("stringsBox"));
    QVERIFY(box("stringsBox")->isChecked());

    dialog->fillBoxes(other.path());
    QVERIFY(!box("stringsBox")->isEnabled());
    const QString strings = other.filePath(QStringLiteral("prog.st"));
    QVERIFY(writeFile(strings, "x"));
    QVERIFY(!box("stringsBox")->isEnabled());
    QVERIFY(box("stringsBox")->isChecked());

    clickStandardButton(dialog, QDialogButtonBox::Ok);

    QVERIFY(!QFile::exists(strings));
    QVERIFY(QFile::exists(watched.filePath(QStringLiteral("prog.st"))));
}

// "prog.st" is a directory with something in it and "prog.vn" is gone by
// the time the user clicks OK: the first is reported over the window the
// dialog belongs to, the second passed over, and the other files go.
void TestDialogs::deleteDialogReportsFileThatCannotBeRemoved()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const char *extension : { ".zu", ".vn", ".cp" })
        QVERIFY(writeFile(dir.filePath(QStringLiteral("prog") + QLatin1String(extension)), "x"));
    const QString strings = dir.filePath(QStringLiteral("prog.st"));
    QVERIFY(QDir().mkpath(strings + QStringLiteral("/inside")));
    QWidget owner;
    QVERIFY(showAndActivate(&owner));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path(), &owner);
    QSignalSpy finished(dialog, &QDialog::finished);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    for (const char *name : boxNames) {
        QVERIFY(box(name));
        QVERIFY(box(name)->isEnabled());
        clickCheck(box(name));
        QVERIFY(box(name)->isChecked());
    }
    QVERIFY(QFile::remove(dir.filePath(QStringLiteral("prog.vn"))));

    BoxAnswerer answerer(QMessageBox::Ok);
    QList<QWidget *> boxParents;
    answerer.snapshot = [&boxParents] {
        if (QWidget *shown = QApplication::activeModalWidget())
            boxParents << shown->parentWidget();
        return QStringList();
    };
    clickInEventLoop(dialog, QDialogButtonBox::Ok);

    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), int(QDialog::Accepted));
    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.at(0).title, QStringLiteral("Ошибка удаления файла"));
    QFile stillThere(strings);
    QVERIFY(!stillThere.remove());
    QCOMPARE(answerer.shown.at(0).text, strings + QLatin1Char('\n') + stillThere.errorString());
    QCOMPARE(answerer.shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(boxParents, QList<QWidget *> { &owner });
    QCOMPARE(entriesOf(dir.path()), QStringList { "prog.st" });
    QCOMPARE(entriesOf(strings), QStringList { "inside" });
}

void TestDialogs::deleteDialogDeletesItselfWhenFinished_data()
{
    QTest::addColumn<QString>("how");

    QTest::newRow("ok") << QStringLiteral("ok");
    QTest::newRow("cancel") << QStringLiteral("cancel");
    QTest::newRow("close") << QStringLiteral("close");
    QTest::newRow("escape") << QStringLiteral("escape");
}

void TestDialogs::deleteDialogDeletesItselfWhenFinished()
{
    QFETCH(QString, how);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(writeFile(dir.filePath(QStringLiteral("prog.zu")), "x"));
    ProgDelete *dialog = makeProgDelete(QStringLiteral("prog"), dir.path());
    QPointer<ProgDelete> pointer(dialog);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));

    if (how == QLatin1String("ok"))
        clickStandardButton(dialog, QDialogButtonBox::Ok);
    else if (how == QLatin1String("cancel"))
        clickStandardButton(dialog, QDialogButtonBox::Cancel);
    else if (how == QLatin1String("close"))
        dialog->close();
    else
        QTest::keyClick(dialog, Qt::Key_Escape);

    QTRY_VERIFY_WITH_TIMEOUT(pointer.isNull(), 5000);
    QVERIFY(QFile::exists(dir.filePath(QStringLiteral("prog.zu"))));
}

QTEST_MAIN(TestDialogs)

#include "tst_dialogs.moc"
