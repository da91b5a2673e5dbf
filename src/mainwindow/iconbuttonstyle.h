#ifndef ICONBUTTONSTYLE_H
#define ICONBUTTONSTYLE_H

#include <QProxyStyle>

// Draws push buttons with their icon alone. The list rows hold five buttons
// in a column 256 pixels wide: their long texts stay the buttons' names and
// tool tips, but shown as labels they would push the icons out.
class IconButtonStyle : public QProxyStyle
{
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget = nullptr) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget = nullptr) const override;
};

#endif // ICONBUTTONSTYLE_H
