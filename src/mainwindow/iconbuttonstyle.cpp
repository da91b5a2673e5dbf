#include "iconbuttonstyle.h"

#include <QStyleOptionButton>

void IconButtonStyle::drawControl(ControlElement element, const QStyleOption *option,
                                  QPainter *painter, const QWidget *widget) const
{
    if (element == CE_PushButtonLabel) {
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option)) {
            QStyleOptionButton iconOnly(*button);
            iconOnly.text.clear();
            QProxyStyle::drawControl(element, &iconOnly, painter, widget);
            return;
        }
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

QSize IconButtonStyle::sizeFromContents(ContentsType type, const QStyleOption *option,
                                        const QSize &size, const QWidget *widget) const
{
    if (type == CT_PushButton) {
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option)) {
            // The contents size QPushButton passes in includes the text.
            QStyleOptionButton iconOnly(*button);
            iconOnly.text.clear();
            return QProxyStyle::sizeFromContents(type, &iconOnly, button->iconSize, widget);
        }
    }
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}
