#ifndef ZUSOURCECODE_H
#define ZUSOURCECODE_H

#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

class EditorWindowInterface;
class QCompleter;
class QMimeData;
class QTextBlock;
class LineNumberArea;

// The editor of one open program, one per tab. The program's name is the
// widget's object name; its file is the name with ".zu" in the current
// directory, read and written in windows-1251.
class ZuSourceCode : public QPlainTextEdit
{
    Q_OBJECT
    friend class LineNumberArea;

public:
    ZuSourceCode(QWidget *page, QString name, EditorWindowInterface *editWindow, QString programsDir);

    bool loadFile(QString name);
    bool canClose(bool asNew);
    // The program is closing: outside changes no longer concern it.
    void stopWatching();
    int lineNumberAreaWidth() const;

    // What the main window restores its buttons from on a tab change.
    bool isChanged() const { return modified; }
    bool isUndoAvailable() const { return undoAvailable; }
    bool isRedoAvailable() const { return redoAvailable; }
    bool isCompileEnabled() const { return compileEnabled; }

    // The part of the word being typed left of the cursor, possibly empty.
    QString currentText() const;
    // The operation's tool tip for the word being typed, or else the
    // completion popup for it.
    void startCompleter();
    // Indents the line Enter has just made like the line above it, one TAB
    // deeper below an opening brace; withClosingBrace adds the closing
    // brace's line below it.
    void doIndent(bool withClosingBrace);
    // Lines count from 1, columns from 0. Selects from the column to the
    // end of its word and makes that the editor's cursor; a position past
    // the end of a line or of the text means the end.
    QTextCursor selectWordAt(unsigned line, unsigned column);
    // The number of the program line a block shows, counting from 1; a
    // very long line is shown in several blocks (see linepieces.h).
    int lineNumber(const QTextBlock &block) const;
    // The first block of a program line, or an invalid block past the end.
    QTextBlock findLine(unsigned line) const;
    // Marks the compiler's error at the word there with a red wavy line.
    void setErrorPosition(unsigned line, unsigned column, unsigned code);
    // Selects the next occurrence of `what` after the cursor, and replaces
    // it with `with` when asked; with `all`, every occurrence from the start
    // of the text, the replacements one undo step. Returns how many
    // occurrences were handled. An empty `what` occurs nowhere.
    int searchAndReplace(QString what, QString with, bool replace, bool ignoreCase, bool wholeWords, bool all);

public slots:
    bool saveFile(QString filename);
    bool toSave();
    void toSaveAs();
    bool _toSaveAs(QString *newName);
    void insertCompleter(QString);
    void restoreCursorPosition(int);
    void fileChanged(QString path);
    void dummy();

private slots:
    void updateLineNumberAreaWidth(int newBlockCount);
    void updateLineNumberArea(QRect rect, int dy);
    void canUndo(bool);
    void canRedo(bool);
    void _Changed(bool s = false);
    bool checkAndSave(QString name);
    void newCursorPosition();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *e) override;
    bool event(QEvent *e) override;
    QMimeData *createMimeDataFromSelection() const override;

private:
    QCompleter *completer() const;
    bool popupVisible() const;
    bool popupWouldInsert() const;
    void closeStalePopup();
    bool isDelimiter(QChar ch) const { return delimiters.contains(ch); }
    void shiftSelectedLines(bool unindent);
    void newLine(bool withClosingBrace);
    bool deleteAcrossPieces(bool backwards);
    int documentEnd() const;
    QString takeWatchedPath();
    void watch(const QString &path);
    void watchAgain(const QString &path);
    QString textForFile() const;
    void askAboutOutsideChange(const QString &path);
    void clearErrorPosition();
    QTextCursor findNext(const QString &what, QTextDocument::FindFlags flags) const;
    int handleAll(const QString &what, const QString &with, bool replace, QTextDocument::FindFlags flags);

    LineNumberArea *lineNumberArea;
    int tabSize = 4;
    int fontSize = 10;
    EditorWindowInterface *editWindow;
    QWidget *page;
    quint32 errorCode = 0;
    quint32 errorLine = 0;
    quint32 errorColumn = 0;
    QString delimiters;
    bool modified = false;
    bool redoAvailable = false;
    bool undoAvailable = false;
    bool compileEnabled = true;
    bool hasPieces = false; // a line was too long to show in one block
    QTimer idleTimer;

    // Outside tools write a file in several steps; while the user is being
    // asked about one of them, the others only mark that the file moved on.
    bool questionOpen = false;
    bool changedDuringQuestion = false;
};

#endif // ZUSOURCECODE_H
