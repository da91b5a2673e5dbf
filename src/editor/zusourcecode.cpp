#include "zusourcecode.h"

#include "codepage.h"
#include "editorwindowinterface.h"
#include "filewrite.h"
#include "programname.h"
#include "linenumberarea.h"

#include <QFile>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QSaveFile>
#include <QTextCodec>
#include <QTextStream>

ZuSourceCode::ZuSourceCode(QWidget *page, QString name, EditorWindowInterface *editWindow, QString)
    : QPlainTextEdit(page)
    , editWindow(editWindow)
    , page(page)
{
    setObjectName(name);
    setFont(QFont(QStringLiteral("courier"), fontSize));
    const QRect underscore = QFontMetrics(font()).boundingRect(QLatin1Char('_'));
    setTabStopDistance(tabSize * (underscore.right() - underscore.left() + 1));
    setWordWrapMode(QTextOption::NoWrap);
    delimiters = QStringLiteral("{}\\;., \t():");
    lineNumberArea = new LineNumberArea(this);
    // The text is laid out as it is set, and again on each change of font,
    // tab stops or wrapping: it comes last, so that a line of megabytes is
    // laid out once.
    loadFile(name);

    connect(this, &QPlainTextEdit::blockCountChanged, this, &ZuSourceCode::updateLineNumberAreaWidth);
    connect(this, &QPlainTextEdit::updateRequest, this, &ZuSourceCode::updateLineNumberArea);
    connect(this, &QPlainTextEdit::undoAvailable, this, &ZuSourceCode::canUndo);
    connect(this, &QPlainTextEdit::redoAvailable, this, &ZuSourceCode::canRedo);
    connect(this, &QPlainTextEdit::modificationChanged, this, &ZuSourceCode::_Changed);
    // Queued, so that the question's modal loop does not run inside Qt's
    // dispatch of file notifications: Qt 5 goes on there to hand another
    // watcher a notification that the modal loop has read already, and that
    // watcher then blocks for good reading an empty queue.
    connect(&watcher, &QFileSystemWatcher::fileChanged, this, &ZuSourceCode::fileChanged, Qt::QueuedConnection);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, &ZuSourceCode::newCursorPosition);

    updateLineNumberAreaWidth(0);
}

// The editor's own reads and writes must raise no change notification.
QString ZuSourceCode::takeWatchedPath()
{
    const QStringList files = watcher.files();
    if (files.isEmpty())
        return QString();
    watcher.removePath(files.first());
    return files.first();
}

void ZuSourceCode::stopWatching()
{
    takeWatchedPath();
    closing = true;
}

void ZuSourceCode::watchAgain(const QString &path)
{
    if (!path.isEmpty())
        watcher.addPath(path);
}

bool ZuSourceCode::loadFile(QString name)
{
    const QString watched = takeWatchedPath();
    modified = false;
    redoAvailable = false;
    undoAvailable = false;
    compileEnabled = true;

    QFile file(name + QStringLiteral(".zu"));
    if (!file.open(QIODevice::ReadOnly)) {
        QMessageBox::critical(window(), tr("Ошибка открытия файла"),
                              name + QLatin1Char('\n') + file.errorString(), QMessageBox::Ok);
        watchAgain(watched);
        return false;
    }
    QTextStream in(&file);
    in.setCodec(windows1251());
    // A program that starts with the letters of a byte order mark is still
    // windows-1251.
    in.setAutoDetectUnicode(false);
    setPlainText(in.readAll());
    if (file.error() != QFileDevice::NoError) {
        QMessageBox::critical(window(), tr("Ошибка чтения файла"),
                              name + QLatin1Char('\n') + file.errorString(), QMessageBox::Ok);
        return false;
    }
    editWindow->setEditButtons(0, 0, 0, 0, 1);
    watcher.addPath(file.fileName());
    return true;
}

// The document's text as the file holds it: lines joined by LF. Unlike
// toPlainText() this keeps no-break spaces, which are letters of the code
// page like any other.
QString ZuSourceCode::textForFile() const
{
    QString text = document()->toRawText();
    for (QChar &ch : text) {
        switch (ch.unicode()) {
        case QChar::ParagraphSeparator:
        case QChar::LineSeparator:
        case 0xfdd0: // frame start
        case 0xfdd1: // frame end
            ch = QLatin1Char('\n');
            break;
        default:
            break;
        }
    }
    return text;
}

// The text goes to a temporary file that replaces the program only once it
// is complete, so a failing write leaves the old program on disk. Text the
// code page cannot hold is refused before anything is written.
bool ZuSourceCode::saveFile(QString filename)
{
    const QString text = textForFile();
    QByteArray bytes;
    if (!toWindows1251(text, &bytes)) {
        QMessageBox::critical(window(), tr("Ошибка записи файла"),
                              filename + QLatin1Char('\n')
                                  + unencodableMessage(text, firstUnencodable(text))
                                  + tr("\nПрограмма не сохранена."),
                              QMessageBox::Ok);
        return false;
    }

    const QString watched = takeWatchedPath();
    // Never in place: a write that failed half-way would leave half a
    // program. Where no temporary file can be made, saving is refused.
    QSaveFile file(filename + QStringLiteral(".zu"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        QMessageBox::critical(window(), tr("Ошибка открытия файла "),
                              filename + QLatin1Char('\n') + file.errorString(), QMessageBox::Ok);
        watchAgain(watched);
        return false;
    }
    if (writeAndCommit(file, bytes)) {
        modified = false;
        document()->setModified(false);
        editWindow->setEditButtons(0, 0, -1, -1, -1);
        watcher.addPath(file.fileName());
        return true;
    }
    QMessageBox::critical(window(), tr("Ошибка записи файла"),
                          filename + QLatin1Char('\n') + file.errorString(), QMessageBox::Ok);
    file.cancelWriting();
    watchAgain(watched);
    return false;
}

bool ZuSourceCode::toSave()
{
    return saveFile(objectName());
}

bool ZuSourceCode::checkAndSave(QString name)
{
    if (name == objectName())
        return saveFile(name);
    const QString problem = nameProblem(name, ".zu");
    if (!problem.isEmpty()) {
        QMessageBox::critical(window(), tr("ВНИМАНИЕ!"), refusedNameText(name, problem), QMessageBox::Ok);
        return false;
    }
    if (QFile::exists(name + QStringLiteral(".zu"))) {
        QMessageBox::critical(this, tr("ВНИМАНИЕ"),
                              tr("Программа с таким именем уже существует.\n\n"
                                 "Её замена может привести к неработоспособности других проектов\n"
                                 "Поэтому, если Вы уверены в необходимости ее замены, сначала\n"
                                 "удалите ее в списке программ и повторите попытку."),
                              QMessageBox::Ok);
        return false;
    }
    return saveFile(name);
}

bool ZuSourceCode::_toSaveAs(QString *newName)
{
    bool accepted = false;
    *newName = QInputDialog::getText(this, tr("ВНИМАНИЕ!"), tr("Введите новое имя для программы"),
                                     QLineEdit::Normal, objectName(), &accepted);
    if (!accepted)
        return false;
    return checkAndSave(*newName);
}

void ZuSourceCode::toSaveAs()
{
    QString newName;
    if (_toSaveAs(&newName))
        editWindow->setEditTabName(newName);
}

void ZuSourceCode::_Changed(bool s)
{
    modified = s;
    editWindow->setEditButtons(s, s, -1, 0, -1);
    if (errorCode)
        clearErrorPosition();
}

void ZuSourceCode::canUndo(bool b)
{
    undoAvailable = b;
    editWindow->setEditButtons(-1, -1, b, -1, -1);
}

void ZuSourceCode::canRedo(bool b)
{
    redoAvailable = b;
    editWindow->setEditButtons(-1, -1, -1, b, -1);
}

bool ZuSourceCode::canClose(bool asNew)
{
    if (!modified)
        return true;
    editWindow->addProgListAndEdit(objectName());
    const QMessageBox::StandardButton answer = QMessageBox::warning(
        this, tr("ВНИМАНИЕ!"),
        tr("Текст программы ") + objectName() + tr(" был изменен.\n\nСохранить изменения?"),
        QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::NoButton);
    if (answer == QMessageBox::Cancel)
        return false;
    if (answer != QMessageBox::Yes)
        return true;
    if (asNew) {
        QString newName;
        return _toSaveAs(&newName);
    }
    return toSave();
}

void ZuSourceCode::fileChanged(QString path)
{
    // A notification queued before the tab closed.
    if (closing)
        return;
    if (idleTimer.isActive())
        return;
    QTimer::singleShot(50, this, &ZuSourceCode::dummy);
    if (questionOpen) {
        changedDuringQuestion = true;
        return;
    }

    const bool existed = QFile::exists(path);
    questionOpen = true;
    changedDuringQuestion = false;
    askAboutOutsideChange(path);
    questionOpen = false;

    // The answer was about the file as it was when asked; if it has since
    // gone or come back, that is a new question.
    if (changedDuringQuestion && QFile::exists(path) != existed)
        fileChanged(path);
}

void ZuSourceCode::askAboutOutsideChange(const QString &path)
{
    const QString name = objectName();
    if (!QFile::exists(path)) {
        const QMessageBox::StandardButton answer = QMessageBox::warning(
            this, tr("ВНИМАНИЕ!"),
            tr("Программа\n") + name + tr("\nбольше не существует на носителе.\nЗакрыть её?"),
            QMessageBox::Yes | QMessageBox::No);
        // The tab closes later: this editor must not be destroyed inside
        // its own slot.
        if (answer == QMessageBox::Yes)
            QTimer::singleShot(0, this, [this, name] { editWindow->tabClose(name); });
        return;
    }

    const QMessageBox::StandardButton answer = QMessageBox::warning(
        this, tr("ВНИМАНИЕ!"),
        tr("Программа\n") + name + tr("\nбыла изменена вне редактора.\nОткрыть измененную программу?"),
        QMessageBox::Yes | QMessageBox::No);
    if (answer == QMessageBox::Yes && canClose(true)) {
        loadFile(name);
        return;
    }
    watcher.addPath(path);
}

void ZuSourceCode::dummy()
{
}

int ZuSourceCode::lineNumberAreaWidth() const
{
    int n = qMax(1, blockCount());
    int digits = 1;
    while (n > 9) {
        n /= 10;
        ++digits;
    }
    return 3 + digits * fontMetrics().horizontalAdvance(QLatin1Char('9'));
}

void ZuSourceCode::updateLineNumberAreaWidth(int)
{
    setViewportMargins(lineNumberAreaWidth(), 0, 0, 0);
}

void ZuSourceCode::updateLineNumberArea(QRect rect, int dy)
{
    if (dy)
        lineNumberArea->scroll(0, dy);
    else
        lineNumberArea->update(0, rect.y(), lineNumberArea->width(), rect.height());
    if (rect.contains(viewport()->rect()))
        updateLineNumberAreaWidth(0);
}

void ZuSourceCode::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    const QRect contents = contentsRect();
    lineNumberArea->setGeometry(QRect(contents.left(), contents.top(), lineNumberAreaWidth(), contents.height()));
}

void ZuSourceCode::insertCompleter(QString)
{
}

void ZuSourceCode::restoreCursorPosition(int)
{
}

void ZuSourceCode::newCursorPosition()
{
}

void ZuSourceCode::clearErrorPosition()
{
}
