#include "testsupport.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStyleOptionButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstring>

#include <sys/resource.h>
#include <unistd.h>

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// ---------------------------------------------------------------------------
// Files

bool writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    return file.write(data) == data.size();
}

QByteArray fileBytes(const QString &path, const QByteArray &unreadable)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return unreadable;
    QByteArray data = file.readAll();
    if (data.isNull())
        data = QByteArray("");
    return data;
}

QDateTime agedTime()
{
    return QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6), Qt::UTC);
}

bool ageFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return file.setFileTime(agedTime(), QFileDevice::FileModificationTime);
}

bool isAged(const QString &path)
{
    return QFileInfo(path).lastModified().toUTC() == agedTime();
}

bool writeAgedFile(const QString &path, const QByteArray &data)
{
    return writeFile(path, data) && ageFile(path);
}

QStringList entriesOf(const QString &path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                QDir::Name);
}

QString systemErrorText(int errorNumber)
{
    return QString::fromLocal8Bit(std::strerror(errorNumber));
}

QString unencodableCharacterText(const QString &character, const QString &codePoint, int line)
{
    return u("Символ «") + character + u("» (U+") + codePoint + u(") в строке ") + QString::number(line)
           + u(" нельзя записать в кодировке windows-1251.");
}

FileSizeLimit::FileSizeLimit(quint64 bytes)
{
    previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit {};
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0)
        return;
    previousLimit = limit.rlim_cur;
    limit.rlim_cur = rlim_t(bytes);
    active = setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

FileSizeLimit::~FileSizeLimit()
{
    if (active) {
        rlimit limit {};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = rlim_t(previousLimit);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    std::signal(SIGXFSZ, previousHandler);
}

SealedDirectory::SealedDirectory(const QString &path)
{
    const QFileDevice::Permissions sealedPermissions = QFileDevice::ReadOwner | QFileDevice::ExeOwner
        | QFileDevice::ReadGroup | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther;
    QDir above(QFileInfo(path).absoluteFilePath());
    while (above.cdUp()) {
        const QString dir = above.absolutePath();
        const QFileDevice::Permissions permissions = QFileInfo(dir).permissions();
        if (permissions & QFileDevice::ExeOther)
            continue;
        if (!QFile::setPermissions(dir, permissions | QFileDevice::ExeOther))
            return;
        previous.prepend(qMakePair(dir, int(permissions)));
    }
    const QString dir = QFileInfo(path).absoluteFilePath();
    const QFileDevice::Permissions permissions = QFileInfo(dir).permissions();
    if (!QFile::setPermissions(dir, sealedPermissions))
        return;
    previous.prepend(qMakePair(dir, int(permissions)));
    sealed = true;
}

SealedDirectory::~SealedDirectory()
{
    for (const QPair<QString, int> &dir : qAsConst(previous))
        QFile::setPermissions(dir.first, QFileDevice::Permissions(dir.second));
}

UnprivilegedScope::UnprivilegedScope()
{
    if (geteuid() != 0) {
        active = true;
        return;
    }
    const uid_t nobody = 65534;
    previousUser = geteuid();
    previousGroup = getegid();
    if (setegid(nobody) != 0)
        return;
    if (seteuid(nobody) != 0) {
        setegid(previousGroup);
        return;
    }
    dropped = true;
    active = true;
}

UnprivilegedScope::~UnprivilegedScope()
{
    if (!dropped)
        return;
    // The user first: only root may change the group back.
    if (seteuid(previousUser) != 0 || setegid(previousGroup) != 0)
        qFatal("Could not return to the user the tests run as");
}

bool canMakeFileIn(const QString &dir)
{
    QFile probe(QDir(dir).filePath(QStringLiteral("probe-of-the-test")));
    if (!probe.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    probe.remove();
    return true;
}

bool canWriteInPlace(const QString &path)
{
    QFile file(path);
    return file.exists() && file.open(QIODevice::WriteOnly | QIODevice::Append);
}

bool enterProgramsDirBesideVictims(const QString &root)
{
    const QDir dir(root);
    return dir.mkpath(QStringLiteral("progs")) && dir.mkpath(QStringLiteral("abs"))
           && writeAgedFile(dir.filePath(QStringLiteral("victim.zu")), "victim\n")
           && writeAgedFile(dir.filePath(QStringLiteral("abs/victim.zu")), "abs victim\n")
           && QDir::setCurrent(dir.filePath(QStringLiteral("progs")));
}

QString victimsChanged(const QString &root)
{
    const QDir dir(root);
    const QStringList expectedEntries { QStringLiteral("abs"), QStringLiteral("progs"), QStringLiteral("victim.zu") };
    if (entriesOf(root) != expectedEntries)
        return QStringLiteral("%1 holds %2").arg(root, entriesOf(root).join(QLatin1Char(' ')));
    if (entriesOf(dir.filePath(QStringLiteral("abs"))) != QStringList { QStringLiteral("victim.zu") })
        return QStringLiteral("abs holds %1").arg(entriesOf(dir.filePath(QStringLiteral("abs"))).join(QLatin1Char(' ')));
    const QPair<const char *, QByteArray> victims[] = { { "victim.zu", "victim\n" }, { "abs/victim.zu", "abs victim\n" } };
    for (const auto &victim : victims) {
        const QString path = dir.filePath(QLatin1String(victim.first));
        if (fileBytes(path) != victim.second || !isAged(path))
            return path + QStringLiteral(" was written");
    }
    return QString();
}

// ---------------------------------------------------------------------------
// Names of programs and projects

QString emptyNameReason()
{
    return u("Имя не задано.");
}

QString directoryNameReason()
{
    return u("Имена «.» и «..» принадлежат каталогам.");
}

QString separatorNameReason()
{
    return u("Имя не может содержать «/» или «\\».");
}

QString controlCharacterReason()
{
    return u("Имя не может содержать управляющие символы.");
}

QString tooLongNameReason()
{
    return u("Имя файла длиннее 200 байт.");
}

QString refusedNameBoxText(const QString &name, const QString &reason)
{
    return u("Недопустимое имя «") + name + u("».\n") + reason;
}

static QString countedListText(const QString &heading, int count, const QStringList &shown)
{
    QString text = heading + QStringLiteral(" (") + QString::number(count) + u("):\n")
                   + shown.join(QLatin1Char('\n'));
    if (count > shown.size())
        text += u("\nи ещё ") + QString::number(count - shown.size());
    return text;
}

QString skippedNamesBoxText(int count, const QStringList &shownNames)
{
    return countedListText(u("Недопустимые имена программ пропущены"), count, shownNames);
}

QString unreadProgramsBoxText(int count, const QStringList &shownLines)
{
    return countedListText(u("Не удалось прочитать программы"), count, shownLines);
}

// ---------------------------------------------------------------------------
// Widgets

QStringList itemTexts(const QListWidget *list)
{
    QStringList texts;
    for (int row = 0; row < list->count(); ++row)
        texts << list->item(row)->text();
    return texts;
}

QStringList itemTexts(const QComboBox *box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

QStringList tabTexts(const QTabWidget *tabs)
{
    QStringList texts;
    for (int i = 0; i < tabs->count(); ++i)
        texts << tabs->tabText(i);
    return texts;
}

QListWidgetItem *itemNamed(const QListWidget *list, const QString &text)
{
    const QList<QListWidgetItem *> found = list->findItems(text, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.first();
}

QPoint itemCenter(QListWidget *list, QListWidgetItem *item)
{
    list->scrollToItem(item);
    return list->visualItemRect(item).center();
}

void hoverItem(QListWidget *list, QListWidgetItem *item)
{
    const QPoint center = itemCenter(list, item);
    QTest::mouseMove(list->viewport(), QPoint(list->viewport()->width() - 2, list->viewport()->height() - 2));
    QTest::mouseMove(list->viewport(), center);
}

void clickItem(QListWidget *list, QListWidgetItem *item)
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, itemCenter(list, item));
}

void clickRow(QListWidget *list, int row)
{
    clickItem(list, list->item(row));
}

void doubleClickItem(QListWidget *list, QListWidgetItem *item)
{
    const QPoint pos = itemCenter(list, item);
    QTest::mousePress(list->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
}

void clickTab(QTabWidget *tabs, int index)
{
    QTabBar *bar = tabs->tabBar();
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->tabRect(index).center());
}

QAbstractButton *closeButtonOf(QTabWidget *tabs, int index)
{
    QTabBar *bar = tabs->tabBar();
    QWidget *button = bar->tabButton(index, QTabBar::RightSide);
    if (!button)
        button = bar->tabButton(index, QTabBar::LeftSide);
    return qobject_cast<QAbstractButton *>(button);
}

QLineEdit *openEditor(const QListWidget *list)
{
    const QList<QLineEdit *> editors = list->viewport()->findChildren<QLineEdit *>();
    for (QLineEdit *editor : editors) {
        if (editor->isVisible())
            return editor;
    }
    return nullptr;
}

void typeText(QWidget *widget, const QString &text)
{
    for (int i = 0; i < text.size(); ++i) {
        QString character(text.at(i));
        if (text.at(i).isHighSurrogate() && i + 1 < text.size())
            character += text.at(++i);
        if (character.size() == 1 && character.at(0).unicode() > 0x20 && character.at(0).unicode() < 0x7f)
            QTest::keyClick(widget, character.at(0).toLatin1());
        else
            QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, character, Qt::NoModifier);
    }
}

void replaceText(QLineEdit *editor, const QString &name)
{
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Backspace);
    typeText(editor, name);
}

void clickIndicator(QAbstractButton *button, QStyle::SubElement indicator)
{
    QStyleOptionButton option;
    option.initFrom(button);
    const QRect rect = button->style()->subElementRect(indicator, &option, button);
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, rect.center());
}

void clickRadio(QRadioButton *button)
{
    clickIndicator(button, QStyle::SE_RadioButtonIndicator);
}

void clickCheck(QCheckBox *box)
{
    clickIndicator(box, QStyle::SE_CheckBoxIndicator);
}

bool showAndActivate(QWidget *window)
{
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        return false;
    window->activateWindow();
    return QTest::qWaitForWindowActive(window);
}

void deleteWidgets(QList<QPointer<QWidget>> &widgets)
{
    for (const QPointer<QWidget> &widget : qAsConst(widgets))
        delete widget.data();
    widgets.clear();
}

void deliverPending()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

int indexOfKey(const SettingsList &list, const QString &key)
{
    for (int i = 0; i < list.size(); ++i) {
        if (list.at(i).key == key)
            return i;
    }
    return -1;
}

// ---------------------------------------------------------------------------
// TempCurrentDir

TempCurrentDir::TempCurrentDir() = default;

TempCurrentDir::~TempCurrentDir()
{
    leave();
}

bool TempCurrentDir::make()
{
    dir.reset(new QTemporaryDir);
    return dir->isValid();
}

bool TempCurrentDir::enter()
{
    previous = QDir::currentPath();
    return dir && QDir::setCurrent(dir->path());
}

void TempCurrentDir::leave()
{
    if (!previous.isEmpty())
        QDir::setCurrent(previous);
    previous.clear();
    dir.reset();
}

QString TempCurrentDir::path() const
{
    return dir ? dir->path() : QString();
}

QString TempCurrentDir::errorString() const
{
    return dir ? dir->errorString() : QString();
}

// ---------------------------------------------------------------------------
// Processes

ProcessRun runProcess(const QString &program, const QStringList &arguments,
                      const QProcessEnvironment &environment, int timeout)
{
    QProcessEnvironment childEnvironment = QProcessEnvironment::systemEnvironment();
    childEnvironment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    childEnvironment.insert(environment);
    QProcess process;
    process.setProcessEnvironment(childEnvironment);
    process.start(program, arguments);

    ProcessRun run;
    run.finished = process.waitForFinished(timeout) && process.exitStatus() == QProcess::NormalExit;
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(5000);
    }
    run.exitCode = process.exitCode();
    run.output = process.readAllStandardOutput();
    run.errors = process.readAllStandardError();
    return run;
}

bool helpNamesDefault(const QByteArray &help, const QString &path)
{
    const auto withoutSpace = [](QString text) {
        return text.remove(QRegularExpression(QStringLiteral("\\s")));
    };
    return withoutSpace(QString::fromLocal8Bit(help))
            .contains(withoutSpace(QStringLiteral("(default: %1)").arg(path)));
}
