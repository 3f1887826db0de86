#include "app/shell/popupwindow.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

PopupWindow::PopupWindow(const QString &text)
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto *windowLayout = new QHBoxLayout(this);
    windowLayout->setContentsMargins(10, 0, 0, 0);

    auto *scrollArea = new QScrollArea;
    scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    scrollArea->setContentsMargins(0, 0, 0, 0);
    scrollArea->setWidgetResizable(true);
    scrollArea->setFrameShape(QFrame::StyledPanel);
    scrollArea->setFrameShadow(QFrame::Sunken);

    auto *frame = new QFrame;
    frame->setContentsMargins(0, 3, 0, 0);
    auto *frameLayout = new QVBoxLayout(frame);
    auto *label = new QLabel(text);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    frameLayout->addWidget(label);
    scrollArea->setWidget(frame);

    scrollArea->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::MinimumExpanding);
    windowLayout->addWidget(scrollArea);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::MinimumExpanding);
}
