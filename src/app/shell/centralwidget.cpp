#include "app/shell/centralwidget.h"

#include "app/shell/pathlabel.h"
#include "app/shell/settings.h"

#include <QFileInfo>
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

// The title of the program's window: after the name of the file that it shows, if it does.
void setTitle(QWidget *centralwidget, const QString &path)
{
    const QString program = "ZRT-Analytics-2";
    const QString name = QFileInfo(path).fileName();
    centralwidget->window()->setWindowTitle(name.isEmpty() ? program : name + " - " + program);
}

} // namespace

void emptyCentralWidget()
{
    QWidget *const centralwidget = Settings::instance()->ui().centralwidget;
    setTitle(centralwidget, {});
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
    QWidget *const centralwidget = Settings::instance()->ui().centralwidget;
    centralwidget->setLayout(layout);
    const auto *const label = form->findChild<PathLabel *>();
    setTitle(centralwidget, label ? label->path() : QString());
    if (plot && panel)
        QWidget::setTabOrder(lastInTabOrder(panel), plot);
}
