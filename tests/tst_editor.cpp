// The source editor widget: loading and saving a program file, the modified
// state and the buttons it drives, the save / save-as / close questions, the
// watch on the file for outside changes, byte-exact round trips, and the
// line-number gutter.

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QImage>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSyntaxHighlighter>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>
#include <QtTest>

#include <cerrno>
#include <functional>
#include <memory>

#include "editorsupport.h"
#include "editwindow.h"
#include "linenumberarea.h"
#include "testsupport.h"
#include "textedit.h"
#include "zusourcecode.h"

namespace {

const int questionTimeout = 5000;
// How long a question that must not come is given to come anyway.
const int silenceTimeout = 500;

// The file's bytes, marked when it cannot be read.
QByteArray readBytes(const QString &path)
{
    return fileBytes(path, "<unreadable>");
}

QString changedOutsideText(const QString &name)
{
    return u("Программа\n") + name + u("\nбыла изменена вне редактора.\nОткрыть измененную программу?");
}

QString deletedOutsideText(const QString &name)
{
    return u("Программа\n") + name + u("\nбольше не существует на носителе.\nЗакрыть её?");
}

QString saveChangesText(const QString &name)
{
    return u("Текст программы ") + name + u(" был изменен.\n\nСохранить изменения?");
}

QStringList blockTexts(const QTextDocument *document)
{
    QStringList texts;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        texts << block.text();
    return texts;
}

LineNumberArea *gutterOf(ZuSourceCode *editor)
{
    LineNumberArea *found = nullptr;
    for (QObject *child : editor->children()) {
        if (auto *area = dynamic_cast<LineNumberArea *>(child))
            found = area;
    }
    return found;
}

int expectedGutterWidth(const ZuSourceCode *editor, int lines)
{
    const int digits = QString::number(qMax(1, lines)).size();
    return 3 + digits * editor->fontMetrics().horizontalAdvance(QLatin1Char('9'));
}

// The gutter's width as the editor's viewport margin shows it.
int viewportMargin(ZuSourceCode *editor)
{
    return editor->viewport()->geometry().left() - editor->contentsRect().left();
}

QString lines(int count)
{
    QStringList list;
    for (int i = 1; i <= count; ++i)
        list << QStringLiteral("line %1").arg(i);
    return list.join(QLatin1Char('\n'));
}

const QRgb gutterGray = qRgb(0xc0, 0xc0, 0xc0);

// The inotify instances this process holds: the user has 128 of them by
// default, for all processes.
int inotifyInstances()
{
    int count = 0;
    const QDir fds(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo &fd : fds.entryInfoList(QDir::Files | QDir::System)) {
        if (fd.symLinkTarget().endsWith(QLatin1String("anon_inode:inotify")))
            ++count;
    }
    return count;
}

// Colours every line red: a whole-document rehighlight that changes each
// line's formats.
class AllRedHighlighter : public QSyntaxHighlighter
{
public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

protected:
    void highlightBlock(const QString &text) override { setFormat(0, text.size(), QColor(Qt::red)); }
};

// Counts the resize events a widget receives.
class ResizeCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Resize)
            ++count;
        return false;
    }
};

bool isDark(QRgb pixel)
{
    return qGray(pixel) < 0x80;
}

// The darkest gray level in rows [top, bottom] of the image, 255 if none.
int darkestIn(const QImage &image, int top, int bottom)
{
    int darkest = 255;
    for (int y = qMax(0, top); y <= qMin(image.height() - 1, bottom); ++y) {
        for (int x = 0; x < image.width(); ++x)
            darkest = qMin(darkest, qGray(image.pixel(x, y)));
    }
    return darkest;
}

// The offscreen platform cannot pass size hints on to its windows and says
// so for every window shown; that note is dropped, all else goes through.
QtMessageHandler previousHandler = nullptr;

void dropSizeHintNote(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message == QLatin1String("This plugin does not support propagateSizeHints()"))
        return;
    if (previousHandler)
        previousHandler(type, context, message);
}

// ---------------------------------------------------------------------------
// Modal boxes run their own event loop. This watcher polls for them from a
// timer, notes each one and answers it as planned; a box nobody planned for
// is answered with its most cautious button and marked as such.

struct SeenBox
{
    QString className;
    QString title;
    QString text;       // a message box's text, an input dialog's label
    QString presetText; // an input dialog's text when it appeared
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QWidget *parent = nullptr;
    bool planned = true;
};

struct Reply
{
    QMessageBox::StandardButton button = QMessageBox::NoButton; // message boxes
    bool accept = true;                                         // input dialogs
    QString input;                                              // input dialogs
    std::function<void()> whenShown;  // runs once, when the box appears
    std::function<bool()> answerWhen; // the answer waits until this holds
};

Reply press(QMessageBox::StandardButton button)
{
    Reply reply;
    reply.button = button;
    return reply;
}

Reply enterName(const QString &name)
{
    Reply reply;
    reply.input = name;
    return reply;
}

Reply cancelInput()
{
    Reply reply;
    reply.accept = false;
    return reply;
}

class ModalAnswerer
{
public:
    ModalAnswerer()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { poll(); });
        timer.start(15);
    }

    void plan(const Reply &reply) { replies.append(reply); }
    int pending() const { return replies.size(); }

    QVector<SeenBox> seen;

private:
    void poll()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible())
            return;
        if (modal != current) {
            current = modal;
            answered = false;
            shownFor.start();
            record(modal);
        }
        if (answered)
            return;

        Reply reply;
        const bool planned = !replies.isEmpty();
        if (planned)
            reply = replies.first();
        // A reply's hook runs once, even if further boxes come up meanwhile.
        if (planned && reply.whenShown) {
            replies.first().whenShown = nullptr;
            reply.whenShown();
        }
        // A condition that never comes true must not hang the test.
        if (reply.answerWhen && !reply.answerWhen() && shownFor.elapsed() < questionTimeout)
            return;

        answered = true;
        if (planned)
            replies.removeFirst();
        else
            seen.last().planned = false;
        answer(modal, reply, planned);
    }

    void record(QWidget *modal)
    {
        SeenBox box;
        box.className = QString::fromLatin1(modal->metaObject()->className());
        box.title = modal->windowTitle();
        box.parent = modal->parentWidget();
        if (auto *message = qobject_cast<QMessageBox *>(modal)) {
            box.text = message->text();
            box.buttons = message->standardButtons();
            box.icon = message->icon();
        } else if (auto *input = qobject_cast<QInputDialog *>(modal)) {
            box.text = input->labelText();
            box.presetText = input->textValue();
        }
        seen.append(box);
    }

    void answer(QWidget *modal, const Reply &reply, bool planned)
    {
        if (auto *message = qobject_cast<QMessageBox *>(modal)) {
            QAbstractButton *button = planned ? message->button(reply.button) : nullptr;
            if (!button) {
                seen.last().planned = false;
                for (QMessageBox::StandardButton cautious : { QMessageBox::Cancel, QMessageBox::No, QMessageBox::Ok }) {
                    if ((button = message->button(cautious)))
                        break;
                }
            }
            if (button)
                button->click();
            else
                message->reject();
        } else if (auto *input = qobject_cast<QInputDialog *>(modal)) {
            if (planned && reply.accept) {
                input->setTextValue(reply.input);
                input->accept();
            } else {
                input->reject();
            }
        } else {
            seen.last().planned = false;
            modal->close();
        }
    }

    QTimer timer;
    QList<Reply> replies;
    QPointer<QWidget> current;
    bool answered = false;
    QElapsedTimer shownFor;
};

// A probe of its own on a file: set up at the moment of a change, it tells
// when the change has reached this process's event loop, where the window's
// watcher of program files sees it in the same pass. Queued like that
// watcher's, it fires after the editor has had the notification.
struct ChangeProbe
{
    explicit ChangeProbe(const QString &path)
        : watcher(QStringList { path })
    {
        QObject::connect(&watcher, &QFileSystemWatcher::fileChanged, &watcher, [this] { fired = true; },
                         Qt::QueuedConnection);
    }
    QFileSystemWatcher watcher;
    bool fired = false;
};

} // namespace

class TestEditor : public QObject
{
    Q_OBJECT

private:
    ZuSourceCode *openTab(const QString &name);
    ZuSourceCode *openDirect(const QString &name);
    bool showPage(ZuSourceCode *editor, const QSize &size);
    void showWindow();
    QTabWidget *tabs() const;
    QPushButton *button(const char *name) const;
    // True when no modal box beyond the first `count` shows up for a while.
    bool staysQuiet(int count);

    TempCurrentDir workDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
    ModalAnswerer *answerer = nullptr;
    QList<QPointer<QWidget>> ownPages;

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    // Construction
    void constructionSetsFontTabStopsWrapAndName();

    // Loading, saving and the questions
    void missingFileOpensEmptyUnmodifiedTab();
    void savingUnderOwnNameAsksNothing_data();
    void savingUnderOwnNameAsksNothing();
    void savingUnderExistingProgramNameIsRefused();
    void saveAsNewNameRenamesTabAndMovesWatch();
    void cancelledSaveAsWritesNothing();
    void saveAsBadNameIsRefusedAndWritesNothing_data();
    void saveAsBadNameIsRefusedAndWritesNothing();
    void closeAsNewRefusedWhenNameDialogCancelled();
    void closingModifiedTabAsksToSave_data();
    void closingModifiedTabAsksToSave();
    void exitAsksOnlyAboutModifiedPrograms_data();
    void exitAsksOnlyAboutModifiedPrograms();
    void lineEndsLoadAsLinesAndSaveAsLf_data();
    void lineEndsLoadAsLinesAndSaveAsLf();
    void readErrorShowsBoxAndStopsWatching();

    // Outside changes
    void savingRaisesNoOutsideChangeQuestion();
    void deletedFileAnsweredNoKeepsTabAndStopsWatching();
    void deletedFileAnsweredYesClosesTab();
    void outsideChangeOnUnmodifiedTextReloadsOnYes();
    void outsideChangeOnModifiedTextAsksToSaveUnderNewName();
    void outsideChangeOnModifiedTextDiscardOrCancel_data();
    void outsideChangeOnModifiedTextDiscardOrCancel();
    void outsideChangeAnsweredNoKeepsTextAndWatchesAgain();
    void quickSuccessiveWritesRaiseOneQuestion();
    void deletionDuringChangeQuestionIsAskedAfterwards();
    void hundredOpenProgramsShareOneWatcher();

    // Buttons
    void buttonsFollowEditingState();

    // Data integrity
    void everyWindows1251ByteRoundTrips_data();
    void everyWindows1251ByteRoundTrips();
    void byteOrderMarkBytesStayLetters_data();
    void byteOrderMarkBytesStayLetters();
    void binaryFileSurvivesExceptLineEnds();
    void largeFileLoadsAndSavesBack();
    void failedWriteKeepsOldFileAndModifiedState();
    void unencodableCharacterIsRefusedAndNothingWritten_data();
    void unencodableCharacterIsRefusedAndNothingWritten();
    void savingKeepsPermissions_data();
    void savingKeepsPermissions();
    void savingThroughSymlinkKeepsLink();
    void openFailureOnSaveKeepsWatch();
    void programWhereNoFileCanBeMadeIsNotSavedInPlace();

    // Line numbers
    void gutterWidthFollowsDigitCount_data();
    void gutterWidthFollowsDigitCount();
    void gutterWidensAndNarrowsAtTenLines();
    void rehighlightLeavesViewportLayoutAlone();
    void gutterPaintsNumbersOnGray_data();
    void gutterPaintsNumbersOnGray();
    void gutterScrollsWithText();
};

// ---------------------------------------------------------------------------
// Fixture

ZuSourceCode *TestEditor::openTab(const QString &name)
{
    QWidget *page = window->addTextTab(name);
    return page ? page->findChild<ZuSourceCode *>() : nullptr;
}

ZuSourceCode *TestEditor::openDirect(const QString &name)
{
    return editorOnOwnPage(name, window, ownPages);
}

bool TestEditor::showPage(ZuSourceCode *editor, const QSize &size)
{
    QWidget *page = editor->parentWidget();
    page->resize(size);
    page->show();
    return QTest::qWaitForWindowExposed(page);
}

void TestEditor::showWindow()
{
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
}

QTabWidget *TestEditor::tabs() const
{
    return window->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
}

QPushButton *TestEditor::button(const char *name) const
{
    return window->findChild<QPushButton *>(QString::fromLatin1(name));
}

bool TestEditor::staysQuiet(int count)
{
    return !QTest::qWaitFor([this, count] { return answerer->seen.size() > count; }, silenceTimeout);
}

void TestEditor::initTestCase()
{
    previousHandler = qInstallMessageHandler(dropSizeHintNote);
}

void TestEditor::cleanupTestCase()
{
    qInstallMessageHandler(previousHandler);
}

void TestEditor::init()
{
    QVERIFY(workDir.make());
    QVERIFY(workDir.enter());
    answerer = new ModalAnswerer;
    makePlugin(plugin, window);
    QVERIFY(window);
    QVERIFY(tabs());
}

void TestEditor::cleanup()
{
    deletePlugin(plugin, window);
    deleteWidgets(ownPages);
    delete answerer;
    answerer = nullptr;
    workDir.leave();
}

// ---------------------------------------------------------------------------
// Construction

void TestEditor::constructionSetsFontTabStopsWrapAndName()
{
    QVERIFY(writeFile(QStringLiteral("demo.zu"), "a\tb\n"));
    ZuSourceCode *editor = openDirect(QStringLiteral("demo"));

    QCOMPARE(editor->objectName(), QStringLiteral("demo"));
    QCOMPARE(editor->font().family(), QStringLiteral("courier"));
    QCOMPARE(editor->font().pointSize(), 10);
    QVERIFY(!editor->font().italic());
    QCOMPARE(editor->font().weight(), int(QFont::Normal));
    QCOMPARE(editor->wordWrapMode(), QTextOption::NoWrap);
    const QRect underscore = QFontMetrics(editor->font()).boundingRect(QLatin1Char('_'));
    QCOMPARE(editor->tabStopDistance(), qreal(4 * (underscore.right() - underscore.left() + 1)));
    QCOMPARE(editor->toPlainText(), QStringLiteral("a\tb\n"));
    QVERIFY(!editor->isChanged());
    QVERIFY(editor->isCompileEnabled());
    LineNumberArea *gutter = gutterOf(editor);
    QVERIFY(gutter);
    QCOMPARE(gutter->sizeHint(), QSize(expectedGutterWidth(editor, 2), 0));
    QVERIFY(answerer->seen.isEmpty());
}

// ---------------------------------------------------------------------------
// Loading, saving and the questions

void TestEditor::missingFileOpensEmptyUnmodifiedTab()
{
    answerer->plan(press(QMessageBox::Ok));
    ZuSourceCode *editor = openTab(QStringLiteral("absent"));
    QVERIFY(editor);

    QCOMPARE(answerer->seen.size(), 1);
    const SeenBox box = answerer->seen.first();
    QCOMPARE(box.title, u("Ошибка открытия файла"));
    QVERIFY2(box.text.startsWith(QStringLiteral("absent\n")), qPrintable(box.text));
    QVERIFY(box.text.size() > 7); // followed by the file's error string
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.parent, static_cast<QWidget *>(window));

    QVERIFY(editor->toPlainText().isEmpty());
    QVERIFY(!editor->document()->isModified());
    QVERIFY(!editor->isChanged());
    QCOMPARE(editor->objectName(), QStringLiteral("absent"));
    QCOMPARE(tabs()->count(), 1);
    QCOMPARE(tabs()->tabText(0), QStringLiteral("absent"));
    QCOMPARE(window->getOpenedList(), QStringList { QStringLiteral("absent") });
    QVERIFY(!QFile::exists(QStringLiteral("absent.zu")));
}

void TestEditor::savingUnderOwnNameAsksNothing_data()
{
    QTest::addColumn<bool>("viaSaveAs");
    QTest::newRow("save") << false;
    QTest::newRow("save as, keeping the name") << true;
}

void TestEditor::savingUnderOwnNameAsksNothing()
{
    QFETCH(bool, viaSaveAs);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    editor->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor, QStringLiteral("def"));
    QVERIFY(editor->isChanged());

    if (viaSaveAs) {
        answerer->plan(enterName(QStringLiteral("prog")));
        QString name;
        QVERIFY(editor->_toSaveAs(&name));
        QCOMPARE(name, QStringLiteral("prog"));
        QCOMPARE(answerer->seen.size(), 1);
        QCOMPARE(answerer->seen.first().className, QStringLiteral("QInputDialog"));
    } else {
        QVERIFY(editor->toSave());
        QVERIFY(answerer->seen.isEmpty());
    }
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\ndef"));
    QVERIFY(!editor->isChanged());
    QVERIFY(!editor->document()->isModified());
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });
}

void TestEditor::savingUnderExistingProgramNameIsRefused()
{
    const QByteArray otherBytes("other's own text\r\n\xc0\xc1\n");
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    QVERIFY(writeFile(QStringLiteral("other.zu"), otherBytes));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));

    answerer->plan(enterName(QStringLiteral("other")));
    answerer->plan(press(QMessageBox::Ok));
    QString name;
    QVERIFY(!editor->_toSaveAs(&name));
    QCOMPARE(name, QStringLiteral("other"));

    QCOMPARE(answerer->seen.size(), 2);
    const SeenBox dialog = answerer->seen.at(0);
    QCOMPARE(dialog.className, QStringLiteral("QInputDialog"));
    QCOMPARE(dialog.title, u("ВНИМАНИЕ!"));
    QCOMPARE(dialog.text, u("Введите новое имя для программы"));
    QCOMPARE(dialog.presetText, QStringLiteral("prog"));
    QCOMPARE(dialog.parent, static_cast<QWidget *>(editor));
    const SeenBox refusal = answerer->seen.at(1);
    QCOMPARE(refusal.title, u("ВНИМАНИЕ"));
    QCOMPARE(refusal.text,
             u("Программа с таким именем уже существует.\n\n"
               "Её замена может привести к неработоспособности других проектов\n"
               "Поэтому, если Вы уверены в необходимости ее замены, сначала\n"
               "удалите ее в списке программ и повторите попытку."));
    QCOMPARE(refusal.icon, QMessageBox::Critical);
    QCOMPARE(refusal.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(refusal.planned);

    QCOMPARE(readBytes(QStringLiteral("other.zu")), otherBytes);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QVERIFY(editor->isChanged());
    QCOMPARE(editor->objectName(), QStringLiteral("prog"));
    QCOMPARE(tabs()->tabText(0), QStringLiteral("prog"));
}

void TestEditor::saveAsNewNameRenamesTabAndMovesWatch()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    editor->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor, QStringLiteral("new"));

    answerer->plan(enterName(QStringLiteral("renamed")));
    editor->toSaveAs();
    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(readBytes(QStringLiteral("renamed.zu")), QByteArray("abc\nnew"));
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QCOMPARE(editor->objectName(), QStringLiteral("renamed"));
    QCOMPARE(tabs()->tabText(0), QStringLiteral("renamed"));
    QVERIFY(!editor->isChanged());

    // The old file is no longer the editor's business; the new one is.
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "changed\n"));
    QVERIFY(staysQuiet(1));
    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("renamed.zu"), "changed\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QCOMPARE(answerer->seen.at(1).text, changedOutsideText(QStringLiteral("renamed")));
}

void TestEditor::cancelledSaveAsWritesNothing()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));
    const QStringList before = entriesOf();

    answerer->plan(cancelInput());
    QString name = QStringLiteral("untouched");
    QVERIFY(!editor->_toSaveAs(&name));

    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(answerer->seen.first().className, QStringLiteral("QInputDialog"));
    QCOMPARE(entriesOf(), before);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QVERIFY(editor->isChanged());
    QCOMPARE(editor->objectName(), QStringLiteral("prog"));
}

void TestEditor::saveAsBadNameIsRefusedAndWritesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("into parent") << QStringLiteral("../name") << separatorNameReason();
    QTest::newRow("absolute") << QStringLiteral("<root>/name") << separatorNameReason();
    QTest::newRow("dot-dot") << QStringLiteral("..") << directoryNameReason();
    QTest::newRow("empty") << QString() << emptyNameReason();
    QTest::newRow("300 characters") << QString(300, QLatin1Char('n')) << tooLongNameReason();
}

// The name typed for Save As must be one file name in the programs
// directory: any other is refused with a box that says why, and nothing
// is written, inside the directory or out.
void TestEditor::saveAsBadNameIsRefusedAndWritesNothing()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const QString root = QDir::currentPath();
    name.replace(QLatin1String("<root>"), root);
    QVERIFY(QDir::current().mkdir(QStringLiteral("progs")));
    QVERIFY(QDir::setCurrent(QStringLiteral("progs")));
    QVERIFY(writeAgedFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));
    QPushButton *saveAs = button("saveAsProgramButton");
    QVERIFY(saveAs->isEnabled());

    answerer->plan(enterName(name));
    answerer->plan(press(QMessageBox::Ok));
    QTest::mouseClick(saveAs, Qt::LeftButton);

    QCOMPARE(answerer->seen.size(), 2);
    QCOMPARE(answerer->seen.at(0).className, QStringLiteral("QInputDialog"));
    const SeenBox refusal = answerer->seen.at(1);
    QCOMPARE(refusal.title, u("ВНИМАНИЕ!"));
    QCOMPARE(refusal.text, refusedNameBoxText(name, reason));
    QCOMPARE(refusal.icon, QMessageBox::Critical);
    QCOMPARE(refusal.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(refusal.parent, static_cast<QWidget *>(window));
    QVERIFY(refusal.planned);
    QCOMPARE(entriesOf(root), QStringList { QStringLiteral("progs") });
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QVERIFY(isAged(QStringLiteral("prog.zu")));
    QVERIFY(editor->isChanged());
    QVERIFY(saveAs->isEnabled());
    QCOMPARE(editor->objectName(), QStringLiteral("prog"));
    QCOMPARE(tabs()->tabText(0), QStringLiteral("prog"));
}

void TestEditor::closeAsNewRefusedWhenNameDialogCancelled()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));
    const QStringList before = entriesOf();

    answerer->plan(press(QMessageBox::Yes));
    answerer->plan(cancelInput());
    QVERIFY(!editor->canClose(true));

    QCOMPARE(answerer->seen.size(), 2);
    const SeenBox question = answerer->seen.at(0);
    QCOMPARE(question.className, QStringLiteral("QMessageBox"));
    QCOMPARE(question.title, u("ВНИМАНИЕ!"));
    QCOMPARE(question.text, saveChangesText(QStringLiteral("prog")));
    QCOMPARE(question.buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    QCOMPARE(question.icon, QMessageBox::Warning);
    QCOMPARE(answerer->seen.at(1).className, QStringLiteral("QInputDialog"));
    QCOMPARE(tabs()->count(), 1);
    QCOMPARE(entriesOf(), before);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QVERIFY(editor->isChanged());
}

void TestEditor::closingModifiedTabAsksToSave_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("tabsAfter");
    QTest::addColumn<QByteArray>("fileAfter");
    QTest::newRow("cancel keeps the tab") << int(QMessageBox::Cancel) << 1 << QByteArray("abc\n");
    QTest::newRow("no discards the changes") << int(QMessageBox::No) << 0 << QByteArray("abc\n");
    QTest::newRow("yes saves under the own name") << int(QMessageBox::Yes) << 0 << QByteArray("xabc\n");
}

void TestEditor::closingModifiedTabAsksToSave()
{
    QFETCH(int, answer);
    QFETCH(int, tabsAfter);
    QFETCH(QByteArray, fileAfter);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));

    answerer->plan(press(QMessageBox::StandardButton(answer)));
    window->tabClose(0);

    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(answerer->seen.first().text, saveChangesText(QStringLiteral("prog")));
    QVERIFY(answerer->seen.first().planned);
    QCOMPARE(tabs()->count(), tabsAfter);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), fileAfter);
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });
}

void TestEditor::exitAsksOnlyAboutModifiedPrograms_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("mayExit");
    QTest::newRow("cancel") << int(QMessageBox::Cancel) << false;
    QTest::newRow("no") << int(QMessageBox::No) << true;
}

void TestEditor::exitAsksOnlyAboutModifiedPrograms()
{
    QFETCH(int, answer);
    QFETCH(bool, mayExit);
    QVERIFY(writeFile(QStringLiteral("first.zu"), "1\n"));
    QVERIFY(writeFile(QStringLiteral("second.zu"), "2\n"));
    openTab(QStringLiteral("first"));
    ZuSourceCode *second = openTab(QStringLiteral("second"));
    showWindow();
    QCOMPARE(window->getOpenedList(), (QStringList { QStringLiteral("first"), QStringLiteral("second") }));
    QVERIFY(window->canExit());
    QVERIFY(answerer->seen.isEmpty());

    QTest::keyClicks(second, QStringLiteral("x"));
    answerer->plan(press(QMessageBox::StandardButton(answer)));
    QCOMPARE(window->canExit(), mayExit);
    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(answerer->seen.first().text, saveChangesText(QStringLiteral("second")));
    QCOMPARE(tabs()->count(), 2);
    QCOMPARE(readBytes(QStringLiteral("second.zu")), QByteArray("2\n"));
}

void TestEditor::lineEndsLoadAsLinesAndSaveAsLf_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("blocks");
    QTest::addColumn<QByteArray>("saved");

    QTest::newRow("lf, final newline") << QByteArray("a\nb\n") << QStringList { "a", "b", "" }
                                       << QByteArray("a\nb\n");
    QTest::newRow("crlf, final newline") << QByteArray("a\r\nb\r\nc\r\n") << QStringList { "a", "b", "c", "" }
                                         << QByteArray("a\nb\nc\n");
    QTest::newRow("crlf, no final newline") << QByteArray("a\r\nb\r\nc") << QStringList { "a", "b", "c" }
                                            << QByteArray("a\nb\nc");
    QTest::newRow("lone cr") << QByteArray("a\rb\rc") << QStringList { "a", "b", "c" } << QByteArray("a\nb\nc");
    QTest::newRow("lone cr at the end") << QByteArray("a\rb\r") << QStringList { "a", "b", "" }
                                        << QByteArray("a\nb\n");
    QTest::newRow("mixed") << QByteArray("a\r\nb\rc\nd") << QStringList { "a", "b", "c", "d" }
                           << QByteArray("a\nb\nc\nd");
    QTest::newRow("cr before crlf") << QByteArray("a\r\r\nb") << QStringList { "a", "", "b" }
                                    << QByteArray("a\n\nb");
    QTest::newRow("lf then cr") << QByteArray("a\n\rb") << QStringList { "a", "", "b" } << QByteArray("a\n\nb");
    QTest::newRow("empty crlf lines") << QByteArray("\r\n\r\n") << QStringList { "", "", "" }
                                      << QByteArray("\n\n");
}

void TestEditor::lineEndsLoadAsLinesAndSaveAsLf()
{
    QFETCH(QByteArray, file);
    QFETCH(QStringList, blocks);
    QFETCH(QByteArray, saved);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), file));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));

    QCOMPARE(editor->blockCount(), blocks.size());
    QCOMPARE(blockTexts(editor->document()), blocks);
    QVERIFY(!editor->isChanged());
    QVERIFY(editor->toSave());
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), saved);
    QVERIFY(answerer->seen.isEmpty());
}

void TestEditor::readErrorShowsBoxAndStopsWatching()
{
    // Opening this file succeeds, reading it from the start fails.
    if (!QFile::exists(QStringLiteral("/proc/self/mem")))
        QSKIP("needs /proc/self/mem");
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), QStringLiteral("broken.zu")));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    answerer->plan(press(QMessageBox::Ok));
    QVERIFY(!editor->loadFile(QStringLiteral("broken")));
    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(answerer->seen.first().title, u("Ошибка чтения файла"));
    QVERIFY2(answerer->seen.first().text.startsWith(QStringLiteral("broken\n")),
             qPrintable(answerer->seen.first().text));
    QCOMPARE(answerer->seen.first().icon, QMessageBox::Critical);
    QCOMPARE(answerer->seen.first().parent, static_cast<QWidget *>(window));

    // After a read error nothing is watched, not even the file before.
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "changed\n"));
    QVERIFY(staysQuiet(1));
}

// ---------------------------------------------------------------------------
// Outside changes

void TestEditor::savingRaisesNoOutsideChangeQuestion()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));
    QVERIFY(editor->toSave());
    QVERIFY(staysQuiet(0));
    QTest::keyClicks(editor, QStringLiteral("y"));
    QVERIFY(editor->toSave());
    QVERIFY(staysQuiet(0));
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("xyabc\n"));

    // The file is still watched: a change from outside does ask.
    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "outside\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    QCOMPARE(answerer->seen.first().text, changedOutsideText(QStringLiteral("prog")));
}

void TestEditor::deletedFileAnsweredNoKeepsTabAndStopsWatching()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    answerer->plan(press(QMessageBox::No));
    QVERIFY(QFile::remove(QStringLiteral("prog.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    const SeenBox box = answerer->seen.first();
    QCOMPARE(box.title, u("ВНИМАНИЕ!"));
    QCOMPARE(box.text, deletedOutsideText(QStringLiteral("prog")));
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.parent, static_cast<QWidget *>(editor));
    QVERIFY(staysQuiet(1));
    QCOMPARE(tabs()->count(), 1);
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));

    // Coming back and changing again is no longer noticed.
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "back\n"));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "back again\n"));
    QVERIFY(staysQuiet(1));
    QCOMPARE(tabs()->count(), 1);
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
}

void TestEditor::deletedFileAnsweredYesClosesTab()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    QPointer<ZuSourceCode> editor = openTab(QStringLiteral("prog"));
    QCOMPARE(tabs()->count(), 1);

    answerer->plan(press(QMessageBox::Yes));
    QVERIFY(QFile::remove(QStringLiteral("prog.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    QCOMPARE(answerer->seen.first().text, deletedOutsideText(QStringLiteral("prog")));
    QTRY_COMPARE_WITH_TIMEOUT(tabs()->count(), 0, questionTimeout);
    QVERIFY(staysQuiet(1));
    QVERIFY(window->getOpenedList().isEmpty());
}

void TestEditor::outsideChangeOnUnmodifiedTextReloadsOnYes()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    answerer->plan(press(QMessageBox::Yes));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "from outside\r\n\xc0\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    const SeenBox box = answerer->seen.first();
    QCOMPARE(box.title, u("ВНИМАНИЕ!"));
    QCOMPARE(box.text, changedOutsideText(QStringLiteral("prog")));
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.parent, static_cast<QWidget *>(editor));
    QTRY_COMPARE_WITH_TIMEOUT(editor->toPlainText(), u("from outside\nА\n"), questionTimeout);
    QVERIFY(staysQuiet(1));
    QVERIFY(!editor->isChanged());
    QCOMPARE(tabs()->count(), 1);

    // Reloading watches the file again.
    answerer->plan(press(QMessageBox::Yes));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "third\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(editor->toPlainText(), QStringLiteral("third\n"), questionTimeout);
}

void TestEditor::outsideChangeOnModifiedTextAsksToSaveUnderNewName()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("mine "));

    answerer->plan(press(QMessageBox::Yes));
    answerer->plan(press(QMessageBox::Yes));
    answerer->plan(enterName(QStringLiteral("copy")));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "theirs\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 3, questionTimeout);
    QCOMPARE(answerer->seen.at(0).text, changedOutsideText(QStringLiteral("prog")));
    QCOMPARE(answerer->seen.at(1).text, saveChangesText(QStringLiteral("prog")));
    QCOMPARE(answerer->seen.at(1).buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    QCOMPARE(answerer->seen.at(2).className, QStringLiteral("QInputDialog"));
    QCOMPARE(answerer->seen.at(2).text, u("Введите новое имя для программы"));
    QCOMPARE(answerer->seen.at(2).presetText, QStringLiteral("prog"));

    // The own text went to the new name, the outside text was loaded.
    QTRY_COMPARE_WITH_TIMEOUT(editor->toPlainText(), QStringLiteral("theirs\n"), questionTimeout);
    QCOMPARE(readBytes(QStringLiteral("copy.zu")), QByteArray("mine abc\n"));
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("theirs\n"));
    QVERIFY(!editor->isChanged());
    QVERIFY(staysQuiet(3));
}

void TestEditor::outsideChangeOnModifiedTextDiscardOrCancel_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("textAfter");
    QTest::addColumn<bool>("modifiedAfter");
    QTest::newRow("no discards and reloads") << int(QMessageBox::No) << QStringLiteral("theirs\n") << false;
    QTest::newRow("cancel keeps the own text") << int(QMessageBox::Cancel) << QStringLiteral("mine abc\n") << true;
}

void TestEditor::outsideChangeOnModifiedTextDiscardOrCancel()
{
    QFETCH(int, answer);
    QFETCH(QString, textAfter);
    QFETCH(bool, modifiedAfter);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("mine "));

    answerer->plan(press(QMessageBox::Yes));
    answerer->plan(press(QMessageBox::StandardButton(answer)));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "theirs\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QCOMPARE(answerer->seen.at(1).text, saveChangesText(QStringLiteral("prog")));
    QTRY_COMPARE_WITH_TIMEOUT(editor->toPlainText(), textAfter, questionTimeout);
    QVERIFY(staysQuiet(2));
    QCOMPARE(editor->isChanged(), modifiedAfter);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("theirs\n"));
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });

    // Either way the file is watched again.
    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "theirs again\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 3, questionTimeout);
    QCOMPARE(answerer->seen.at(2).text, changedOutsideText(QStringLiteral("prog")));
}

void TestEditor::outsideChangeAnsweredNoKeepsTextAndWatchesAgain()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "first outside\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    QVERIFY(staysQuiet(1));
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
    QVERIFY(!editor->isChanged());

    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "second outside\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QCOMPARE(answerer->seen.at(1).text, changedOutsideText(QStringLiteral("prog")));
    QVERIFY(staysQuiet(2));
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("second outside\n"));
}

void TestEditor::quickSuccessiveWritesRaiseOneQuestion()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    // The second write lands while the question about the first is open;
    // the answer waits until this process has seen it.
    auto probe = std::make_shared<std::unique_ptr<ChangeProbe>>();
    Reply reply = press(QMessageBox::Yes);
    reply.whenShown = [probe] {
        *probe = std::make_unique<ChangeProbe>(QStringLiteral("prog.zu"));
        writeFile(QStringLiteral("prog.zu"), "second write\n");
    };
    reply.answerWhen = [probe] { return *probe && (*probe)->fired; };
    answerer->plan(reply);

    QVERIFY(writeFile(QStringLiteral("prog.zu"), "first write\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(answerer->pending(), 0, questionTimeout);
    QVERIFY(*probe && (*probe)->fired);
    QTRY_COMPARE_WITH_TIMEOUT(editor->toPlainText(), QStringLiteral("second write\n"), questionTimeout);
    QVERIFY(staysQuiet(1));
    QCOMPARE(answerer->seen.first().text, changedOutsideText(QStringLiteral("prog")));
}

void TestEditor::deletionDuringChangeQuestionIsAskedAfterwards()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    auto probe = std::make_shared<std::unique_ptr<ChangeProbe>>();
    Reply reply = press(QMessageBox::No);
    reply.whenShown = [probe] {
        *probe = std::make_unique<ChangeProbe>(QStringLiteral("prog.zu"));
        QFile::remove(QStringLiteral("prog.zu"));
    };
    reply.answerWhen = [probe] { return *probe && (*probe)->fired; };
    answerer->plan(reply);
    answerer->plan(press(QMessageBox::No));

    QVERIFY(writeFile(QStringLiteral("prog.zu"), "changed\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QVERIFY(*probe && (*probe)->fired);
    QCOMPARE(answerer->seen.at(0).text, changedOutsideText(QStringLiteral("prog")));
    QCOMPARE(answerer->seen.at(1).text, deletedOutsideText(QStringLiteral("prog")));
    QVERIFY(answerer->seen.at(1).planned);
    QVERIFY(staysQuiet(2));
    QCOMPARE(tabs()->count(), 1);
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
}

void TestEditor::hundredOpenProgramsShareOneWatcher()
{
    const int before = inotifyInstances();
    QVERIFY(before > 0);
    QList<ZuSourceCode *> editors;
    for (int i = 0; i < 100; ++i) {
        const QString name = QStringLiteral("p%1").arg(i);
        QVERIFY(writeFile(name + QStringLiteral(".zu"), name.toLatin1() + '\n'));
        editors << openTab(name);
        QVERIFY(editors.last());
    }
    QCOMPARE(tabs()->count(), 100);
    QCOMPARE(inotifyInstances(), before);
    QCOMPARE(window->findChildren<QFileSystemWatcher *>().size(), 1);

    // The change reaches the editor of that file, and no other.
    answerer->plan(press(QMessageBox::Yes));
    QVERIFY(writeFile(QStringLiteral("p57.zu"), "changed\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 1, questionTimeout);
    QCOMPARE(answerer->seen.first().text, changedOutsideText(QStringLiteral("p57")));
    QCOMPARE(answerer->seen.first().parent, static_cast<QWidget *>(editors.at(57)));
    QTRY_COMPARE_WITH_TIMEOUT(editors.at(57)->toPlainText(), QStringLiteral("changed\n"), questionTimeout);
    QVERIFY(staysQuiet(1));
    QCOMPARE(editors.at(56)->toPlainText(), QStringLiteral("p56\n"));
}

// ---------------------------------------------------------------------------
// Buttons

void TestEditor::buttonsFollowEditingState()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QPushButton *save = button("saveProgramButton");
    QPushButton *saveAs = button("saveAsProgramButton");
    QPushButton *undo = button("undoButton");
    QPushButton *redo = button("redoButton");
    QPushButton *compile = button("compileProgramButton");
    QVERIFY(save && saveAs && undo && redo && compile);
    auto states = [&] {
        return QVector<bool> { save->isEnabled(), saveAs->isEnabled(), undo->isEnabled(), redo->isEnabled(),
                               compile->isEnabled() };
    };
    auto flags = [&] {
        return QVector<bool> { editor->isChanged(), editor->isUndoAvailable(), editor->isRedoAvailable(),
                               editor->isCompileEnabled() };
    };

    // Loaded.
    QCOMPARE(states(), (QVector<bool> { false, false, false, false, true }));
    QCOMPARE(flags(), (QVector<bool> { false, false, false, true }));

    // Typed.
    editor->moveCursor(QTextCursor::End);
    QTest::keyClick(editor, Qt::Key_X);
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\nx"));
    QCOMPARE(states(), (QVector<bool> { true, true, true, false, true }));
    QCOMPARE(flags(), (QVector<bool> { true, true, false, true }));

    // Saved with the button.
    save->click();
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\nx"));
    QCOMPARE(states(), (QVector<bool> { false, false, true, false, true }));
    QCOMPARE(flags(), (QVector<bool> { false, true, false, true }));

    // Undone with the button: the text differs from the file again.
    undo->click();
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
    QVERIFY(editor->isRedoAvailable());
    QVERIFY(!editor->isUndoAvailable());
    QVERIFY(editor->isChanged());
    QCOMPARE(save->isEnabled(), true);
    QCOMPARE(saveAs->isEnabled(), true);
    QCOMPARE(undo->isEnabled(), false);
    QVERIFY(redo->isEnabled());

    // Redone: back to the saved text.
    redo->click();
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\nx"));
    QCOMPARE(flags(), (QVector<bool> { false, true, false, true }));
    QCOMPARE(states(), (QVector<bool> { false, false, true, false, true }));

    // Typed and undone before saving: unmodified again, redo offered.
    QTest::keyClick(editor, Qt::Key_Y);
    QCOMPARE(states(), (QVector<bool> { true, true, true, false, true }));
    undo->click();
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\nx"));
    QCOMPARE(flags(), (QVector<bool> { false, true, true, true }));
    QCOMPARE(states(), (QVector<bool> { false, false, true, true, true }));

    // Undoing further makes the text differ from the file again: the change
    // of the modified state turns the redo button off, although the
    // document can still redo and reports no change of that.
    undo->click();
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
    QCOMPARE(flags(), (QVector<bool> { true, false, true, true }));
    QCOMPARE(states(), (QVector<bool> { true, true, false, false, true }));
    QVERIFY(answerer->seen.isEmpty());
}

// ---------------------------------------------------------------------------
// Data integrity

void TestEditor::everyWindows1251ByteRoundTrips_data()
{
    QTest::addColumn<bool>("edited");
    QTest::newRow("saved as loaded") << false;
    QTest::newRow("saved after typing and deleting a character") << true;
}

void TestEditor::everyWindows1251ByteRoundTrips()
{
    QFETCH(bool, edited);
    QByteArray bytes;
    for (int c = 0x20; c <= 0xff; ++c) {
        bytes += char(c);
        if (c % 16 == 15)
            bytes += '\n';
    }
    for (int c = 0x01; c <= 0x1f; ++c) {
        if (c != '\n' && c != '\r')
            bytes += char(c);
    }
    bytes += "\ttab\t\n";
    QVERIFY(writeFile(QStringLiteral("prog.zu"), bytes));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));

    const QString text = editor->document()->toRawText();
    QVERIFY(!text.contains(QChar::ReplacementCharacter));
    QVERIFY(text.contains(QChar(0x00a0)));               // A0, the no-break space
    QVERIFY(text.contains(QChar(0x0410)));               // C0
    QVERIFY(text.contains(QChar(0x044f)));               // FF
    QVERIFY(text.contains(QChar(0x0401)));               // A8
    QVERIFY(text.contains(QChar(0x2116)));               // B9
    QVERIFY(text.contains(QChar(0x20ac)));               // 88
    QVERIFY(editor->toPlainText().startsWith(u(" !\"#")));

    if (edited) {
        showWindow();
        QTest::keyClick(editor, Qt::Key_Z);
        QVERIFY(editor->isChanged());
        QTest::keyClick(editor, Qt::Key_Backspace);
        QVERIFY(button("saveProgramButton")->isEnabled());
        button("saveProgramButton")->click();
        QVERIFY(!editor->isChanged());
    } else {
        QVERIFY(editor->toSave());
    }
    const QByteArray saved = readBytes(QStringLiteral("prog.zu"));
    QCOMPARE(saved.size(), bytes.size());
    for (int i = 0; i < bytes.size(); ++i) {
        if (saved.at(i) != bytes.at(i)) {
            QFAIL(qPrintable(QStringLiteral("byte %1 at offset %2 came back as %3")
                                 .arg(uchar(bytes.at(i)), 2, 16, QLatin1Char('0'))
                                 .arg(i)
                                 .arg(uchar(saved.at(i)), 2, 16, QLatin1Char('0'))));
        }
    }
    QCOMPARE(saved, bytes);
    QVERIFY(answerer->seen.isEmpty());
}

void TestEditor::byteOrderMarkBytesStayLetters_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("letters");
    QTest::newRow("EF BB BF") << QByteArray("\xef\xbb\xbf") << u("п»ї");
    QTest::newRow("FF FE") << QByteArray("\xff\xfe") << u("яю");
    QTest::newRow("FE FF") << QByteArray("\xfe\xff") << u("юя");
}

void TestEditor::byteOrderMarkBytesStayLetters()
{
    QFETCH(QByteArray, head);
    QFETCH(QString, letters);
    const QByteArray bytes = head + QByteArray("abc\n\xc0\xe1\n");
    QVERIFY(writeFile(QStringLiteral("prog.zu"), bytes));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));

    QCOMPARE(editor->document()->firstBlock().text(), letters + QStringLiteral("abc"));
    QCOMPARE(editor->toPlainText(), letters + u("abc\nАб\n"));
    QVERIFY(editor->toSave());
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), bytes);
}

void TestEditor::binaryFileSurvivesExceptLineEnds()
{
    QRandomGenerator random(20240611);
    QByteArray bytes(64 * 1024, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    // Enough of the interesting cases, whatever the generator gives.
    for (int i = 0; i < bytes.size(); i += 97)
        bytes[i] = '\0';
    bytes.append(QByteArray("\r\n\r\r\0\0\n\r", 9));
    bytes.prepend(QByteArray("\0\r\n", 3));
    QVERIFY(bytes.count('\0') > 600);
    QVERIFY(bytes.contains("\r\n"));

    QByteArray expected = bytes;
    expected.replace("\r\n", "\n");
    expected.replace('\r', '\n');

    QVERIFY(writeFile(QStringLiteral("prog.zu"), bytes));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));
    QCOMPARE(editor->blockCount(), expected.count('\n') + 1);
    QVERIFY(editor->toSave());
    const QByteArray saved = readBytes(QStringLiteral("prog.zu"));
    QCOMPARE(saved.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        if (saved.at(i) != expected.at(i)) {
            QFAIL(qPrintable(QStringLiteral("byte %1 at offset %2 came back as %3")
                                 .arg(uchar(expected.at(i)), 2, 16, QLatin1Char('0'))
                                 .arg(i)
                                 .arg(uchar(saved.at(i)), 2, 16, QLatin1Char('0'))));
        }
    }
    QCOMPARE(saved, expected);
    QVERIFY(answerer->seen.isEmpty());
}

void TestEditor::largeFileLoadsAndSavesBack()
{
    const int target = 20 * 1024 * 1024;
    QByteArray bytes;
    bytes.reserve(target + 128);
    int count = 0;
    while (bytes.size() < target) {
        bytes += "line ";
        bytes += QByteArray::number(++count);
        bytes += ": \xc2\xf1\xe5\xec \xef\xf0\xe8\xe2\xe5\xf2 the quick brown fox jumps over the lazy dog\n";
    }
    QVERIFY(writeFile(QStringLiteral("big.zu"), bytes));

    QElapsedTimer clock;
    clock.start();
    ZuSourceCode *editor = openDirect(QStringLiteral("big"));
    const qint64 loadMs = clock.elapsed();
    QCOMPARE(editor->blockCount(), count + 1);
    QCOMPARE(editor->document()->lastBlock().previous().text().left(12), QStringLiteral("line %1:").arg(count).left(12));
    clock.restart();
    QVERIFY(editor->toSave());
    const qint64 saveMs = clock.elapsed();
    qInfo("20 MiB, %d lines: load %lld ms, save %lld ms", count, loadMs, saveMs);

    QVERIFY(readBytes(QStringLiteral("big.zu")) == bytes);
    QVERIFY2(loadMs + saveMs < 30000, "loading and saving 20 MiB took longer than 30 s");
    QCOMPARE(editor->lineNumberAreaWidth(), expectedGutterWidth(editor, count + 1));
    QVERIFY(answerer->seen.isEmpty());
}

void TestEditor::failedWriteKeepsOldFileAndModifiedState()
{
    QByteArray old(5000, 'o');
    old += '\n';
    QVERIFY(writeFile(QStringLiteral("prog.zu"), old));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("new "));
    QVERIFY(editor->isChanged());
    QPushButton *save = button("saveProgramButton");
    QVERIFY(save->isEnabled());

    answerer->plan(press(QMessageBox::Ok));
    bool saved = true;
    {
        FileSizeLimit limit(4096);
        QVERIFY(limit.isActive());
        saved = editor->toSave();
    }
    QVERIFY(!saved);
    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(answerer->seen.first().title, u("Ошибка записи файла"));
    QVERIFY2(answerer->seen.first().text.startsWith(QStringLiteral("prog\n")),
             qPrintable(answerer->seen.first().text));
    QCOMPARE(answerer->seen.first().icon, QMessageBox::Critical);
    QCOMPARE(answerer->seen.first().parent, static_cast<QWidget *>(window));
    // The new text is larger than the limit: the system cuts the first
    // write short and refuses the rest.
    QCOMPARE(answerer->seen.first().text, QStringLiteral("prog\n") + systemErrorText(EFBIG));

    QCOMPARE(readBytes(QStringLiteral("prog.zu")), old);
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });
    QVERIFY(editor->isChanged());
    QVERIFY(editor->document()->isModified());
    QVERIFY(save->isEnabled());
    QVERIFY(button("saveAsProgramButton")->isEnabled());

    // The file is still watched as before.
    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), old + "outside\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QCOMPARE(answerer->seen.at(1).text, changedOutsideText(QStringLiteral("prog")));

    // Without the limit the same save goes through.
    QVERIFY(editor->toSave());
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("new ") + old);
    QVERIFY(!save->isEnabled());
}

void TestEditor::unencodableCharacterIsRefusedAndNothingWritten_data()
{
    QTest::addColumn<QString>("character");
    QTest::addColumn<QString>("codePoint");
    QTest::addColumn<int>("line");
    QTest::addColumn<bool>("pasted");

    QTest::newRow("typed ideograph") << u("中") << QStringLiteral("4E2D") << 2 << false;
    QTest::newRow("typed arrow") << u("→") << QStringLiteral("2192") << 1 << false;
    QTest::newRow("typed emoji") << u("😀") << QStringLiteral("1F600") << 3 << false;
    QTest::newRow("pasted ideograph") << u("中") << QStringLiteral("4E2D") << 3 << true;
    QTest::newRow("pasted emoji") << u("😀") << QStringLiteral("1F600") << 1 << true;
}

// The code page has no byte for the character: saving it would write
// another character in its place, so nothing is written.
void TestEditor::unencodableCharacterIsRefusedAndNothingWritten()
{
    QFETCH(QString, character);
    QFETCH(QString, codePoint);
    QFETCH(int, line);
    QFETCH(bool, pasted);
    const QByteArray old("first\nsecond\nthird\n");
    // The text with `tail` typed at the end of the line.
    const auto withTail = [&old, line](const QString &tail) {
        QStringList lines = QString::fromLatin1(old).split(QLatin1Char('\n'));
        lines[line - 1] += tail;
        return lines.join(QLatin1Char('\n'));
    };
    QVERIFY(writeFile(QStringLiteral("prog.zu"), old));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    editor->setFocus();
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 1; i < line; ++i)
        QTest::keyClick(editor, Qt::Key_Down);
    QTest::keyClick(editor, Qt::Key_End);
    QTest::keyClick(editor, Qt::Key_X);
    if (pasted) {
        QApplication::clipboard()->setText(character);
        QTest::keyClick(editor, Qt::Key_V, Qt::ControlModifier);
    } else {
        typeText(editor, character);
    }
    QCOMPARE(editor->toPlainText(), withTail(QStringLiteral("x") + character));
    QPushButton *save = button("saveProgramButton");
    QVERIFY(save->isEnabled());

    answerer->plan(press(QMessageBox::Ok));
    save->click();

    QCOMPARE(answerer->seen.size(), 1);
    const SeenBox box = answerer->seen.first();
    QCOMPARE(box.title, u("Ошибка записи файла"));
    QCOMPARE(box.text, QStringLiteral("prog\n") + unencodableCharacterText(character, codePoint, line)
                           + u("\nПрограмма не сохранена."));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.parent, static_cast<QWidget *>(window));
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), old);
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });
    QVERIFY(editor->isChanged());
    QVERIFY(editor->document()->isModified());
    QVERIFY(save->isEnabled());

    // Without the character the same save goes through.
    QTest::keyClick(editor, Qt::Key_Backspace);
    QCOMPARE(editor->toPlainText(), withTail(QStringLiteral("x")));
    save->click();
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), withTail(QStringLiteral("x")).toLatin1());
    QVERIFY(!editor->isChanged());
    QCOMPARE(answerer->seen.size(), 1);
}

void TestEditor::savingKeepsPermissions_data()
{
    QTest::addColumn<int>("permissions");
    QTest::newRow("0640") << int(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup);
    QTest::newRow("0604") << int(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadOther);
}

void TestEditor::savingKeepsPermissions()
{
    QFETCH(int, permissions);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    QVERIFY(QFile::setPermissions(QStringLiteral("prog.zu"), QFileDevice::Permissions(permissions)));
    const QFileDevice::Permissions before = QFile::permissions(QStringLiteral("prog.zu"));
    QVERIFY(before & QFileDevice::Permissions(permissions));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));

    QVERIFY(editor->toSave());
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("xabc\n"));
    QCOMPARE(QFile::permissions(QStringLiteral("prog.zu")), before);
}

void TestEditor::savingThroughSymlinkKeepsLink()
{
    QVERIFY(QDir::current().mkdir(QStringLiteral("store")));
    QVERIFY(writeFile(QStringLiteral("store/real.txt"), "abc\n"));
    QVERIFY(QFile::link(QStringLiteral("store/real.txt"), QStringLiteral("prog.zu")));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QCOMPARE(editor->toPlainText(), QStringLiteral("abc\n"));
    QTest::keyClicks(editor, QStringLiteral("x"));

    QVERIFY(editor->toSave());
    const QFileInfo link(QStringLiteral("prog.zu"));
    QVERIFY(link.isSymLink());
    QCOMPARE(link.symLinkTarget(), QFileInfo(QStringLiteral("store/real.txt")).absoluteFilePath());
    QCOMPARE(readBytes(QStringLiteral("store/real.txt")), QByteArray("xabc\n"));
    QCOMPARE(entriesOf(), (QStringList { QStringLiteral("prog.zu"), QStringLiteral("store") }));
    QCOMPARE(QDir(QStringLiteral("store")).entryList(QDir::Files), QStringList { QStringLiteral("real.txt") });
}

void TestEditor::openFailureOnSaveKeepsWatch()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "abc\n"));
    QVERIFY(QDir::current().mkdir(QStringLiteral("dir.zu")));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));

    answerer->plan(press(QMessageBox::Ok));
    QVERIFY(!editor->saveFile(QStringLiteral("dir")));
    QCOMPARE(answerer->seen.size(), 1);
    QCOMPARE(answerer->seen.first().title, u("Ошибка открытия файла "));
    QVERIFY2(answerer->seen.first().text.startsWith(QStringLiteral("dir\n")),
             qPrintable(answerer->seen.first().text));
    QCOMPARE(answerer->seen.first().icon, QMessageBox::Critical);
    QVERIFY(QFileInfo(QStringLiteral("dir.zu")).isDir());
    QVERIFY(QDir(QStringLiteral("dir.zu")).isEmpty());
    QCOMPARE(entriesOf(), (QStringList { QStringLiteral("dir.zu"), QStringLiteral("prog.zu") }));
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QVERIFY(editor->isChanged());
    QVERIFY(button("saveProgramButton")->isEnabled());

    answerer->plan(press(QMessageBox::No));
    QVERIFY(writeFile(QStringLiteral("prog.zu"), "outside\n"));
    QTRY_COMPARE_WITH_TIMEOUT(answerer->seen.size(), 2, questionTimeout);
    QCOMPARE(answerer->seen.at(1).text, changedOutsideText(QStringLiteral("prog")));
}

// The directory holds no temporary file, so the program could only be
// written in place: a write that failed half-way would leave half a
// program. Saving is refused, and the old file stays as it was.
void TestEditor::programWhereNoFileCanBeMadeIsNotSavedInPlace()
{
    QVERIFY(writeAgedFile(QStringLiteral("prog.zu"), "abc\n"));
    QVERIFY(QFile::setPermissions(QStringLiteral("prog.zu"), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                      | QFileDevice::ReadGroup | QFileDevice::WriteGroup
                                      | QFileDevice::ReadOther | QFileDevice::WriteOther));
    ZuSourceCode *editor = openTab(QStringLiteral("prog"));
    showWindow();
    QTest::keyClicks(editor, QStringLiteral("x"));
    QPushButton *save = button("saveProgramButton");
    QVERIFY(save->isEnabled());

    answerer->plan(press(QMessageBox::Ok));
    {
        const SealedDirectory sealed(QDir::currentPath());
        QVERIFY(sealed.isSealed());
        const UnprivilegedScope unprivileged;
        QVERIFY(unprivileged.isActive());
        QVERIFY(!canMakeFileIn(QDir::currentPath()));
        QVERIFY(canWriteInPlace(QStringLiteral("prog.zu")));
        QTest::mouseClick(save, Qt::LeftButton);
    }

    QCOMPARE(answerer->seen.size(), 1);
    const SeenBox box = answerer->seen.first();
    QCOMPARE(box.title, u("Ошибка открытия файла "));
    QCOMPARE(box.text, QStringLiteral("prog\n") + systemErrorText(EACCES));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.parent, static_cast<QWidget *>(window));
    QVERIFY(box.planned);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("abc\n"));
    QVERIFY(isAged(QStringLiteral("prog.zu")));
    QCOMPARE(entriesOf(), QStringList { QStringLiteral("prog.zu") });
    QVERIFY(editor->isChanged());
    QVERIFY(save->isEnabled());

    // Where a temporary file can be made, the same save goes through.
    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(readBytes(QStringLiteral("prog.zu")), QByteArray("xabc\n"));
    QVERIFY(!editor->isChanged());
    QCOMPARE(answerer->seen.size(), 1);
}

// ---------------------------------------------------------------------------
// Line numbers

void TestEditor::gutterWidthFollowsDigitCount_data()
{
    QTest::addColumn<int>("lineCount");
    QTest::newRow("empty") << 0;
    QTest::newRow("1") << 1;
    QTest::newRow("9") << 9;
    QTest::newRow("10") << 10;
    QTest::newRow("99") << 99;
    QTest::newRow("100") << 100;
    QTest::newRow("1000") << 1000;
}

void TestEditor::gutterWidthFollowsDigitCount()
{
    QFETCH(int, lineCount);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), lines(lineCount).toLatin1()));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));
    QVERIFY(showPage(editor, QSize(400, 300)));
    QCOMPARE(editor->blockCount(), qMax(1, lineCount));

    const int digits = QString::number(qMax(1, lineCount)).size();
    const int expected = 3 + digits * editor->fontMetrics().horizontalAdvance(QLatin1Char('9'));
    QCOMPARE(editor->lineNumberAreaWidth(), expected);
    QCOMPARE(viewportMargin(editor), expected);
    LineNumberArea *gutter = gutterOf(editor);
    QVERIFY(gutter);
    QCOMPARE(gutter->geometry(), QRect(editor->contentsRect().topLeft(), QSize(expected, editor->contentsRect().height())));
    QCOMPARE(gutter->sizeHint(), QSize(expected, 0));
}

void TestEditor::gutterWidensAndNarrowsAtTenLines()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), lines(9).toLatin1()));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));
    QVERIFY(showPage(editor, QSize(400, 300)));
    const int digit = editor->fontMetrics().horizontalAdvance(QLatin1Char('9'));
    QVERIFY(digit > 0);
    QCOMPARE(viewportMargin(editor), 3 + digit);
    QSignalSpy counts(editor, &QPlainTextEdit::blockCountChanged);

    editor->moveCursor(QTextCursor::End);
    QTest::keyClick(editor, Qt::Key_Return);
    QCOMPARE(editor->blockCount(), 10);
    QCOMPARE(counts.count(), 1);
    QCOMPARE(viewportMargin(editor), 3 + 2 * digit);
    QCOMPARE(editor->lineNumberAreaWidth(), 3 + 2 * digit);

    QTest::keyClick(editor, Qt::Key_Backspace);
    QCOMPARE(editor->blockCount(), 9);
    QCOMPARE(counts.count(), 2);
    QCOMPARE(viewportMargin(editor), 3 + digit);

    // The gutter itself takes the width at the next resize.
    editor->parentWidget()->resize(410, 300);
    QTRY_COMPARE_WITH_TIMEOUT(gutterOf(editor)->width(), 3 + digit, questionTimeout);
}

// Laying the viewport out again on every coloured line cost a fifth of a
// whole-document rehighlight. The viewport is moved off its place first:
// laying it out would put it back, with a resize event.
void TestEditor::rehighlightLeavesViewportLayoutAlone()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), lines(300).toLatin1()));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));
    QVERIFY(showPage(editor, QSize(400, 300)));
    const int margin = viewportMargin(editor);
    QCOMPARE(margin, expectedGutterWidth(editor, 300));
    QWidget *viewport = editor->viewport();
    const QRect moved = viewport->geometry().adjusted(1, 0, 0, -1);
    viewport->setGeometry(moved);
    ResizeCounter resizes;
    viewport->installEventFilter(&resizes);

    AllRedHighlighter highlighter(editor->document());
    highlighter.rehighlight();
    QCOMPARE(editor->document()->lastBlock().layout()->formats().size(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(resizes.count, 0);
    QCOMPARE(viewport->geometry(), moved);

    // A new digit still widens the gutter.
    editor->moveCursor(QTextCursor::End);
    for (int i = 300; i < 1000; ++i)
        editor->insertPlainText(QStringLiteral("\n"));
    QCOMPARE(editor->blockCount(), 1000);
    QCOMPARE(viewportMargin(editor), expectedGutterWidth(editor, 1000));
    QVERIFY(resizes.count > 0);
}

void TestEditor::gutterPaintsNumbersOnGray_data()
{
    QTest::addColumn<int>("lineCount");
    QTest::newRow("empty document") << 0;
    QTest::newRow("three lines") << 3;
}

void TestEditor::gutterPaintsNumbersOnGray()
{
    QFETCH(int, lineCount);
    QVERIFY(writeFile(QStringLiteral("prog.zu"), lines(lineCount).toLatin1()));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));
    QVERIFY(showPage(editor, QSize(400, 300)));
    LineNumberArea *gutter = gutterOf(editor);
    QVERIFY(gutter);
    const QImage image = gutter->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(image.width(), expectedGutterWidth(editor, lineCount));

    // The background: above the first line, the right-hand top corner, the
    // three spare columns on the left, and everything below the last number.
    QCOMPARE(image.pixel(image.width() - 1, 0), gutterGray);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < 3; ++x)
            QCOMPARE(image.pixel(x, y), gutterGray);
    }

    // One dark number per line, drawn in black, inside that line's band.
    const int shown = qMax(1, lineCount);
    QTextBlock block = editor->document()->firstBlock();
    int lastBottom = 0;
    for (int i = 0; i < shown; ++i, block = block.next()) {
        QVERIFY(block.isValid());
        const QRect line = editor->cursorRect(QTextCursor(block));
        QVERIFY2(darkestIn(image, line.top(), line.bottom()) <= 0x40,
                 qPrintable(QStringLiteral("no black number on line %1").arg(i + 1)));
        lastBottom = line.bottom();
    }
    QVERIFY(lastBottom + 2 < image.height());
    QCOMPARE(darkestIn(image, lastBottom + 2, image.height() - 1), int(qGray(gutterGray)));

    int darkPixels = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            darkPixels += isDark(image.pixel(x, y));
    }
    QVERIFY(darkPixels > 0);
}

void TestEditor::gutterScrollsWithText()
{
    QVERIFY(writeFile(QStringLiteral("prog.zu"), lines(200).toLatin1()));
    ZuSourceCode *editor = openDirect(QStringLiteral("prog"));
    QVERIFY(showPage(editor, QSize(300, 200)));
    LineNumberArea *gutter = gutterOf(editor);
    QVERIFY(gutter);
    QScrollBar *bar = editor->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), 0);

    const QTextBlock probeBlock = editor->document()->findBlockByNumber(5);
    const int textTopBefore = editor->cursorRect(QTextCursor(probeBlock)).top();
    const QImage before = gutter->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QSignalSpy requests(editor, &QPlainTextEdit::updateRequest);

    bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    QCOMPARE(bar->value(), 1);
    const int shift = editor->cursorRect(QTextCursor(probeBlock)).top() - textTopBefore;
    QVERIFY(shift < 0);

    int dy = 0;
    for (const QList<QVariant> &request : qAsConst(requests)) {
        if (request.at(1).toInt() != 0)
            dy = request.at(1).toInt();
    }
    QCOMPARE(dy, shift);

    // What was at row y - shift is now at row y; the middle rows are
    // compared, away from both edges.
    const QImage after = gutter->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(after.size(), before.size());
    QVERIFY(after != before);
    const int lineHeight = editor->fontMetrics().height();
    int comparedRows = 0;
    for (int y = 2 * lineHeight; y < after.height() - 2 * lineHeight + shift; ++y) {
        for (int x = 0; x < after.width(); ++x) {
            if (after.pixel(x, y) != before.pixel(x, y - shift))
                QFAIL(qPrintable(QStringLiteral("gutter pixel %1,%2 does not follow the text").arg(x).arg(y)));
        }
        ++comparedRows;
    }
    QVERIFY(comparedRows >= lineHeight);
    QVERIFY(answerer->seen.isEmpty());
}

QTEST_MAIN(TestEditor)

#include "tst_editor.moc"
