#include "windowreport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QSaveFile>
#include <QTabWidget>

void WindowReport::addCompilerMessage(const QString &message)
{
    m_messages << message;
}

// The widgets are found by the object names the host relies on; a tab
// page holds its program's editor.
bool WindowReport::write(const QWidget *window, const QString &path) const
{
    QJsonObject report;
    report.insert(QStringLiteral("messages"), QJsonArray::fromStringList(m_messages));
    if (const auto *console = window->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit")))
        report.insert(QStringLiteral("console"), console->toPlainText());

    const auto *tabs = window->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    const QWidget *page = tabs ? tabs->currentWidget() : nullptr;
    const auto *editor = page ? page->findChild<QPlainTextEdit *>() : nullptr;
    if (editor) {
        report.insert(QStringLiteral("tab"), tabs->tabText(tabs->currentIndex()));
        QTextCursor cursor = editor->textCursor();
        report.insert(QStringLiteral("line"), cursor.blockNumber() + 1);
        report.insert(QStringLiteral("column"), cursor.positionInBlock());
        cursor.select(QTextCursor::WordUnderCursor);
        report.insert(QStringLiteral("word"), cursor.selectedText());
        QStringList marked;
        const QList<QTextEdit::ExtraSelection> marks = editor->extraSelections();
        for (const QTextEdit::ExtraSelection &mark : marks)
            marked << mark.cursor.selectedText();
        report.insert(QStringLiteral("marked"), QJsonArray::fromStringList(marked));
    }

    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly)
            && file.write(QJsonDocument(report).toJson()) >= 0
            && file.commit();
}
