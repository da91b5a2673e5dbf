#ifndef WINDOWREPORT_H
#define WINDOWREPORT_H

#include <QString>
#include <QStringList>

class QWidget;

// What the editor window shows, for scripts and tests that run zuhost: the
// console's text, the current tab, where its editor's cursor stands, the
// word there and the words marked in it, and the compiler messages the
// host sent, written as one JSON object.
class WindowReport
{
public:
    void addCompilerMessage(const QString &message);
    bool write(const QWidget *window, const QString &path) const;

private:
    QStringList m_messages;
};

#endif // WINDOWREPORT_H
