#include "app/shell/centralwidget.h"

#include "app/shell/settings.h"

#include <QHBoxLayout>
#include <QLayoutItem>

namespace {

QWidget *lastInTabOrder(QWidget *parent)
{
    QWidget *last = parent;
    while (parent->isAncestorOf(last->nextInFocusChain()))
        last = last->nextInFocusChain();
    return last;
}

} // namespace

void emptyCentralWidget()
{
    QWidget *const centralwidget = Settings::instance()->ui().centralwidget;
    QLayout *const layout = centralwidget->layout();
    if (!layout)
        return;
    while (QLayoutItem *const item = layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    delete layout;
}

void fillCentralWidget(QWidget *form, QWidget *plot, QWidget *panel)
{
    auto *const layout = new QHBoxLayout;
    layout->setContentsMargins(10, 10, 10, 10);
    if (plot) {
        layout->addWidget(form, 0, Qt::AlignLeft);
        layout->addWidget(plot, 1);
    } else {
        layout->addWidget(form, 1);
    }
    if (panel)
        layout->addWidget(panel, 0);
    Settings::instance()->ui().centralwidget->setLayout(layout);
    if (plot && panel)
        QWidget::setTabOrder(lastInTabOrder(panel), plot);
}
