#include "zusourcecode.h"

#include "codepage.h"
#include "editorwindowinterface.h"
#include "filewrite.h"
#include "programname.h"
#include "linenumberarea.h"
#include "linepieces.h"
#include "programwatcher.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFile>
#include <QFileInfo>
#include <QHelpEvent>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QSaveFile>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCodec>
#include <QTextStream>
#include <QToolTip>

#include <climits>

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
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, &ZuSourceCode::newCursorPosition);

    updateLineNumberAreaWidth(0);
}

// The editor's own reads and writes must raise no change notification.
QString ZuSourceCode::takeWatchedPath()
{
    return editWindow->programWatcher()->unwatch(this);
}

void ZuSourceCode::stopWatching()
{
    takeWatchedPath();
}

void ZuSourceCode::watch(const QString &path)
{
    editWindow->programWatcher()->watch(path, this);
}

void ZuSourceCode::watchAgain(const QString &path)
{
    if (!path.isEmpty())
        watch(path);
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
        editWindow->loadFailed(tr("Ошибка открытия файла"), name, file.errorString());
        watchAgain(watched);
        return false;
    }
    QTextStream in(&file);
    in.setCodec(windows1251());
    // A program that starts with the letters of a byte order mark is still
    // windows-1251.
    in.setAutoDetectUnicode(false);
    QVector<int> continuing;
    setPlainText(LinePieces::cut(in.readAll(), &continuing));
    LinePieces::mark(document(), continuing);
    hasPieces = !continuing.isEmpty();
    if (file.error() != QFileDevice::NoError) {
        editWindow->loadFailed(tr("Ошибка чтения файла"), name, file.errorString());
        return false;
    }
    editWindow->setEditButtons(0, 0, 0, 0, 1);
    watch(file.fileName());
    return true;
}

// The document's text as the file holds it: lines joined by LF, the
// pieces of a long line joined again. Unlike toPlainText() this keeps
// no-break spaces, which are letters of the code page like any other.
QString ZuSourceCode::textForFile() const
{
    return LinePieces::fileText(document(), 0, documentEnd());
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
        watch(file.fileName());
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
    watch(path);
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

// Setting the margins lays the editor out again even when they stay as
// they are, and the gutter asks on every repaint of the whole viewport
// (each line coloured anew is one): only a new digit count changes them.
void ZuSourceCode::updateLineNumberAreaWidth(int)
{
    const int width = lineNumberAreaWidth();
    if (viewportMargins().left() != width)
        setViewportMargins(width, 0, 0, 0);
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

// ---------------------------------------------------------------------------
// Keys, completion and tool tips

namespace {

bool isBlank(QChar ch)
{
    return ch == QLatin1Char(' ') || ch == QLatin1Char('\t');
}

} // namespace

// The completer all editors share, when it serves this one.
QCompleter *ZuSourceCode::completer() const
{
    QCompleter *shared = editWindow->sharedCompleter();
    return shared && shared->widget() == this ? shared : nullptr;
}

bool ZuSourceCode::popupVisible() const
{
    QCompleter *c = completer();
    return c && c->popup()->isVisible();
}

// Whether the popup's current row is longer than the word typed: once the
// whole name is typed there is nothing left to insert.
bool ZuSourceCode::popupWouldInsert() const
{
    QCompleter *c = completer();
    const QModelIndex current = c->popup()->currentIndex();
    return current.isValid()
           && current.data(c->completionRole()).toString().size() > c->completionPrefix().size();
}

// A popup offered for another word than the one now left of the cursor
// would complete the wrong text.
void ZuSourceCode::closeStalePopup()
{
    QCompleter *c = completer();
    if (c && c->popup()->isVisible() && c->completionPrefix() != currentText())
        c->popup()->hide();
}

int ZuSourceCode::documentEnd() const
{
    return document()->characterCount() - 1;
}

void ZuSourceCode::keyPressEvent(QKeyEvent *e)
{
    const int key = e->key();
    const Qt::KeyboardModifiers modifiers = e->modifiers();
    const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;

    // The popup's own keys go back to the completer, which completes or
    // closes. Return on a name typed in full would complete nothing, so it
    // closes the popup and makes the new line.
    if (popupVisible()) {
        if (isReturn && !popupWouldInsert()) {
            completer()->popup()->hide();
        } else if (isReturn || key == Qt::Key_Escape || key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            e->ignore();
            return;
        }
    }

    if ((key == Qt::Key_Backspace || key == Qt::Key_Delete) && modifiers == Qt::NoModifier
        && deleteAcrossPieces(key == Qt::Key_Backspace)) {
        closeStalePopup();
    } else if (key == Qt::Key_Backspace) {
        QPlainTextEdit::keyPressEvent(e);
        if (!currentText().isEmpty())
            startCompleter();
        else
            closeStalePopup();
    } else if (key == Qt::Key_Space && (modifiers & Qt::ControlModifier)) {
        startCompleter();
    } else if ((key == Qt::Key_Tab || key == Qt::Key_Backtab) && textCursor().hasSelection()) {
        shiftSelectedLines(key == Qt::Key_Backtab);
    } else if (isReturn) {
        newLine(modifiers.testFlag(Qt::ShiftModifier));
    } else if (key == Qt::Key_Left && (modifiers & Qt::AltModifier)) {
        editWindow->cursorPrevPosition(documentEnd());
    } else if (key == Qt::Key_Right && (modifiers & Qt::AltModifier)) {
        editWindow->cursorNextPosition(documentEnd());
    } else {
        QPlainTextEdit::keyPressEvent(e);
        // Control characters (Delete, Escape) end a word as delimiters do.
        const QString text = e->text();
        if (!text.isEmpty() && text.back().isPrint() && !isDelimiter(text.back())
            && !(modifiers & (Qt::ControlModifier | Qt::AltModifier)))
            startCompleter();
        else
            closeStalePopup();
    }
}

// Tab puts a TAB before every line of the selection, Backtab takes one
// TAB or blank from the start of each, as one undo step.
void ZuSourceCode::shiftSelectedLines(bool unindent)
{
    QTextCursor selection = textCursor();
    const int start = selection.selectionStart();
    const int end = selection.selectionEnd();
    const QTextBlock last = document()->findBlock(end);

    // The pieces of a long line take no TAB of their own: it would land in
    // the middle of the line.
    QTextCursor edit(document());
    int lines = 0;
    edit.beginEditBlock();
    for (QTextBlock block = LinePieces::lineStart(document()->findBlock(start));
         block.isValid() && block.blockNumber() <= last.blockNumber(); block = block.next()) {
        if (LinePieces::continuesLine(block))
            continue;
        ++lines;
        edit.setPosition(block.position());
        if (!unindent)
            edit.insertText(QStringLiteral("\t"));
        else if (isBlank(document()->characterAt(block.position())))
            edit.deleteChar();
    }
    edit.endEditBlock();
    if (!unindent)
        return;

    // The new selection counts one character off every line, whether the
    // line had one to lose or not; at the start of the text it stops there.
    const int textEnd = documentEnd();
    selection.setPosition(qBound(0, start - 1, textEnd));
    selection.setPosition(qBound(0, end - lines, textEnd), QTextCursor::KeepAnchor);
    setTextCursor(selection);
}

// Between two pieces of a long line the file has no character: Backspace
// and Delete there take the character beyond, as they do inside a line.
// An emptied piece just joins its neighbour.
bool ZuSourceCode::deleteAcrossPieces(bool backwards)
{
    QTextCursor cursor = textCursor();
    if (!hasPieces || cursor.hasSelection())
        return false;
    const QTextBlock block = cursor.block();
    if (backwards) {
        if (!cursor.atBlockStart() || !LinePieces::continuesLine(block) || block.previous().length() <= 1)
            return false;
        cursor.movePosition(QTextCursor::PreviousCharacter);
        cursor.deletePreviousChar();
    } else {
        const QTextBlock next = block.next();
        if (!cursor.atBlockEnd() || !LinePieces::continuesLine(next) || next.length() <= 1)
            return false;
        cursor.setPosition(next.position());
        cursor.deleteChar();
    }
    ensureCursorVisible();
    return true;
}

// Copied text is the file's: no line break between the pieces of a line.
QMimeData *ZuSourceCode::createMimeDataFromSelection() const
{
    if (!hasPieces)
        return QPlainTextEdit::createMimeDataFromSelection();
    const QTextCursor cursor = textCursor();
    auto *data = new QMimeData;
    data->setText(LinePieces::fileText(document(), cursor.selectionStart(), cursor.selectionEnd()));
    return data;
}

// A real new line even with Shift held (which would otherwise break the
// line inside the same block), indented, undone in one step.
void ZuSourceCode::newLine(bool withClosingBrace)
{
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertBlock(LinePieces::withoutMark(cursor.blockFormat()));
    setTextCursor(cursor);
    doIndent(withClosingBrace);
    cursor.endEditBlock();
    ensureCursorVisible();
}

void ZuSourceCode::doIndent(bool withClosingBrace)
{
    QTextCursor cursor = textCursor();
    const QString previous = LinePieces::lineStart(cursor.block().previous()).text();
    int indentEnd = 0;
    while (indentEnd < previous.size() && isBlank(previous.at(indentEnd)))
        ++indentEnd;
    const QString indentation = previous.left(indentEnd);
    const bool opensBlock = previous.contains(QLatin1Char('{'));

    if (opensBlock && withClosingBrace) {
        const int here = cursor.position();
        cursor.insertText(QLatin1Char('\n') + indentation + QLatin1Char('}'));
        cursor.setPosition(here);
    }
    cursor.insertText(opensBlock ? indentation + QLatin1Char('\t') : indentation);
    setTextCursor(cursor);
}

QString ZuSourceCode::currentText() const
{
    const QTextCursor cursor = textCursor();
    const int lineStart = cursor.block().position();
    int start = cursor.position();
    while (start > lineStart && !isDelimiter(document()->characterAt(start - 1)))
        --start;
    QTextCursor word(document());
    word.setPosition(start);
    word.setPosition(cursor.position(), QTextCursor::KeepAnchor);
    return word.selectedText();
}

void ZuSourceCode::startCompleter()
{
    const QString prefix = currentText();
    // In the editor's coordinates: the viewport lies right of the gutter.
    const QRect cursorArea = cursorRect().translated(viewport()->pos());
    QCompleter *c = completer();

    // No name is empty: the host need not be asked.
    const QString tip = prefix.isEmpty() ? QString() : editWindow->getOperToolTip(prefix);
    if (!tip.isEmpty()) {
        if (c)
            c->popup()->hide();
        QToolTip::showText(mapToGlobal(cursorArea.bottomLeft()), tip, this);
        return;
    }
    if (!c || !editWindow->isAutoComplete())
        return;

    QAbstractItemView *popup = c->popup();
    if (c->completionPrefix() != prefix || !popup->isVisible()) {
        c->setCompletionPrefix(prefix);
        popup->setCurrentIndex(c->completionModel()->index(0, 0));
    }
    QRect area = cursorArea;
    area.setWidth(popup->sizeHintForColumn(0) + popup->verticalScrollBar()->sizeHint().width());
    c->complete(area);
}

void ZuSourceCode::insertCompleter(QString completion)
{
    QCompleter *c = completer();
    if (!c)
        return;
    const int untyped = completion.size() - c->completionPrefix().size();
    if (untyped <= 0)
        return;
    QTextCursor cursor = textCursor();
    cursor.insertText(completion.right(untyped));
    setTextCursor(cursor);
}

bool ZuSourceCode::event(QEvent *e)
{
    if (e->type() != QEvent::ToolTip)
        return QPlainTextEdit::event(e);
    auto *help = static_cast<QHelpEvent *>(e);
    // Over the gutter or a scroll bar there is no word.
    if (!viewport()->geometry().contains(help->pos()))
        return QPlainTextEdit::event(e);

    QTextCursor cursor = cursorForPosition(viewport()->mapFrom(this, help->pos()));
    cursor.select(QTextCursor::WordUnderCursor);
    const QString word = cursor.selectedText();
    const QString tip = word.isEmpty() ? QString() : editWindow->getOperToolTip(word);
    if (tip.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), tip, this);
    return true;
}

// ---------------------------------------------------------------------------
// Cursor history and the compiler's error mark

void ZuSourceCode::restoreCursorPosition(int position)
{
    // The place was recorded in a text that may since have become shorter:
    // a place beyond its end is refused and the cursor stays where it is.
    if (position < 0 || position > documentEnd())
        return;
    QTextCursor cursor = textCursor();
    cursor.setPosition(position);
    setTextCursor(cursor);
}

void ZuSourceCode::newCursorPosition()
{
    const int position = textCursor().position();
    if (position >= 0)
        editWindow->storeCursorToHistory(objectName(), position);
}

int ZuSourceCode::lineNumber(const QTextBlock &block) const
{
    return hasPieces ? LinePieces::lineNumber(block) : block.blockNumber() + 1;
}

QTextBlock ZuSourceCode::findLine(unsigned line) const
{
    if (line - 1 >= unsigned(blockCount()))
        return QTextBlock();
    return hasPieces ? LinePieces::findLine(document(), int(line)) : document()->findBlockByNumber(int(line - 1));
}

QTextCursor ZuSourceCode::selectWordAt(unsigned line, unsigned column)
{
    // Past the last line (line 0 wraps round to the largest) is the end of
    // the text, past the end of a line the end of that line.
    int lineEnd = documentEnd();
    int start = lineEnd;
    QTextBlock block = findLine(line);
    if (block.isValid()) {
        // A column past a piece's end lies in the pieces after it.
        while (column > unsigned(block.length() - 1) && LinePieces::continuesLine(block.next())) {
            column -= unsigned(block.length() - 1);
            block = block.next();
        }
        lineEnd = block.position() + block.length() - 1;
        start = block.position() + int(qMin(column, unsigned(block.length() - 1)));
    }
    int end = start;
    while (end < lineEnd && !isDelimiter(document()->characterAt(end)))
        ++end;

    QTextCursor cursor(document());
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    return cursor;
}

// The mark is drawn over the text rather than put into it, so it changes
// neither the modified state nor the undo steps, and the highlighter, which
// sets the text's colours anew, leaves it alone.
void ZuSourceCode::setErrorPosition(unsigned line, unsigned column, unsigned code)
{
    errorCode = code;
    errorLine = line;
    errorColumn = column;

    QTextEdit::ExtraSelection mark;
    mark.cursor = selectWordAt(line, column);
    mark.format.setUnderlineColor(Qt::red);
    mark.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    setExtraSelections({ mark });

    // The cursor waits at the start of the word; that step is not a place
    // of its own in the history.
    QTextCursor wordStart = mark.cursor;
    wordStart.clearSelection();
    wordStart.movePosition(QTextCursor::PreviousWord);
    const bool wasBlocked = blockSignals(true);
    setTextCursor(wordStart);
    blockSignals(wasBlocked);
    setFocus(Qt::OtherFocusReason);
}

void ZuSourceCode::clearErrorPosition()
{
    setExtraSelections({});
    errorCode = 0;
}

// ---------------------------------------------------------------------------
// Search and replace

namespace {

// For the whole-word test a no-break space is a blank, as the document's
// own search takes it.
QChar searchable(QChar ch)
{
    return ch == QChar::Nbsp ? QLatin1Char(' ') : ch;
}

// Where in one line the document's search, run from `from` again and again,
// each time from the end of what it found last, finds `what`, at most `most`
// times; with `replace`, each found occurrence having been replaced with
// `with` before the next search. That next search starts after the
// inserted text, so only the whole-word test sees the replacement: as the
// character before an occurrence that follows it directly. Like the
// document's search, an occurrence refused as part of a longer word moves
// the search one character past its end. Each search in the document would
// copy the line again; here a long line full of occurrences is read once.
QVector<int> occurrences(QString line, const QString &what, const QString &with, bool replace,
                         QTextDocument::FindFlags flags, int from = 0, int most = INT_MAX)
{
    line.replace(QChar::Nbsp, QLatin1Char(' '));
    const Qt::CaseSensitivity cs = flags.testFlag(QTextDocument::FindCaseSensitively) ? Qt::CaseSensitive
                                                                                       : Qt::CaseInsensitive;
    QVector<int> starts;
    int replacedEnd = -1;   // where the last replacement ends, in the line as it was
    QChar beforeReplaced;   // the character before that place once replaced
    auto charBefore = [&](int position) {
        if (position == replacedEnd)
            return beforeReplaced;
        return position > 0 ? line.at(position - 1) : QChar();
    };
    while (from <= line.size() && starts.size() < most) {
        const int start = line.indexOf(what, from, cs);
        if (start < 0)
            break;
        const int end = start + what.size();
        if (flags.testFlag(QTextDocument::FindWholeWords)
            && (charBefore(start).isLetterOrNumber() || (end < line.size() && line.at(end).isLetterOrNumber()))) {
            from = end + 1;
            continue;
        }
        starts << start;
        if (replace) {
            beforeReplaced = with.isEmpty() ? charBefore(start) : searchable(with.back());
            replacedEnd = end;
        }
        from = end;
    }
    return starts;
}

} // namespace

int ZuSourceCode::searchAndReplace(QString what, QString with, bool replace, bool ignoreCase, bool wholeWords,
                                   bool all)
{
    if (what.isEmpty())
        return 0;
    QTextDocument::FindFlags flags;
    if (!ignoreCase)
        flags |= QTextDocument::FindCaseSensitively;
    if (wholeWords)
        flags |= QTextDocument::FindWholeWords;
    if (all)
        return handleAll(what, with, replace, flags);

    const QTextCursor found = findNext(what, flags);
    if (found.isNull())
        return 0;
    setTextCursor(found);
    // The editor's cursor moves past the inserted text: the next search
    // starts there.
    if (replace)
        textCursor().insertText(with);
    return 1;
}

// The first occurrence from the end of the cursor's selection on, as the
// document's own search finds it, but in program lines rather than blocks:
// an occurrence may run across a piece break, and the whole-word test sees
// the letters on the other side of one.
QTextCursor ZuSourceCode::findNext(const QString &what, QTextDocument::FindFlags flags) const
{
    const int from = textCursor().selectionEnd();
    LinePieces::ProgramLine line = LinePieces::programLine(document()->findBlock(from));
    int place = line.place(from);
    for (;;) {
        const QVector<int> starts = occurrences(line.text, what, QString(), false, flags, place, 1);
        if (!starts.isEmpty()) {
            QTextCursor found(document());
            found.setPosition(line.startPosition(starts.first()));
            found.setPosition(line.endPosition(starts.first() + what.size()), QTextCursor::KeepAnchor);
            return found;
        }
        const QTextBlock next = line.last.next();
        if (!next.isValid())
            return QTextCursor();
        line = LinePieces::programLine(next);
        place = 0;
    }
}

// Every occurrence from the start of the text, found program line by
// program line as the search from each to the next finds them, all
// replacements made in one edit block: one undo step, and the document is
// laid out and highlighted again once, at its end. The editor's cursor ends
// where the search from one occurrence to the next would leave it: past the
// last replacement or on the last occurrence, or else at the start.
int ZuSourceCode::handleAll(const QString &what, const QString &with, bool replace, QTextDocument::FindFlags flags)
{
    QTextCursor edit(document());
    QTextCursor last(document());
    // Moves with the edits before it: where the next line starts.
    QTextCursor nextLine(document());
    int count = 0;
    edit.beginEditBlock();
    for (QTextBlock block = document()->begin(); block.isValid();) {
        const LinePieces::ProgramLine line = LinePieces::programLine(block);
        const QTextBlock after = line.last.next();
        if (after.isValid())
            nextLine.setPosition(after.position());
        const QVector<int> starts = occurrences(line.text, what, with, replace, flags);
        // From the line's end back: the places found before stay where they were.
        for (int i = starts.size() - 1; i >= 0; --i) {
            edit.setPosition(line.startPosition(starts.at(i)));
            edit.setPosition(line.endPosition(starts.at(i) + what.size()), QTextCursor::KeepAnchor);
            if (replace)
                edit.insertText(with);
            if (i == starts.size() - 1)
                last = edit;
        }
        count += starts.size();
        block = after.isValid() ? nextLine.block() : QTextBlock();
    }
    edit.endEditBlock();
    setTextCursor(last);
    return count;
}
