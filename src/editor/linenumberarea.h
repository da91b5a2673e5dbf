#ifndef LINENUMBERAREA_H
#define LINENUMBERAREA_H

#include <QWidget>

class ZuSourceCode;

// The gutter on an editor's left that shows the line numbers. It lies over
// the editor's left viewport margin, which the editor keeps as wide as the
// largest number needs.
class LineNumberArea : public QWidget
{
public:
    explicit LineNumberArea(ZuSourceCode *editor);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ZuSourceCode *editor;
};

#endif // LINENUMBERAREA_H
