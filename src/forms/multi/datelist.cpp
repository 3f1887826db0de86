#include "forms/multi/datelist.h"

#include "app/shell/clicklable.h"

#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>

namespace {

// ClickLable compares these texts; grey ones stay as they are.
QString styleOf(const DateList::Date &date)
{
    if (!date.reason.isEmpty())
        return "color: grey";
    return date.isMarked ? "color: red" : "color: black";
}

} // namespace

DateList::DateList(QWidget *parent) : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void DateList::setDates(std::vector<Date> newDates)
{
    dates = std::move(newDates);
    labels.clear();
    shown = -1;
    auto *const inner = new QWidget;
    // The links are black, whatever colours the desktop has.
    QPalette light = inner->palette();
    light.setColor(QPalette::Window, Qt::white);
    inner->setPalette(light);
    inner->setAutoFillBackground(true);
    auto *const layout = new QVBoxLayout(inner);
    layout->setSpacing(1);
    layout->setContentsMargins(6, 4, 6, 4);
    for (std::size_t i = 0; i < dates.size(); ++i) {
        auto *const label = new ClickLable(dates[i].text, inner);
        label->setObjectName(QString("date_%1").arg(i));
        label->setStyleSheet(styleOf(dates[i]));
        label->setToolTip(dates[i].reason);
        connect(label, &ClickLable::clicked, this, [this, i] {
            setFocus(Qt::MouseFocusReason);
            go(int(i));
        });
        layout->addWidget(label);
        labels.push_back(label);
    }
    layout->addStretch(1);
    setWidget(inner); // deletes the labels that were there
}

void DateList::setCurrent(int index)
{
    const auto setBold = [this](int at, bool isBold) {
        if (at < 0 || at >= count())
            return;
        QFont font = labels[std::size_t(at)]->font();
        font.setBold(isBold);
        labels[std::size_t(at)]->setFont(font);
    };
    setBold(shown, false);
    shown = index;
    setBold(shown, true);
    if (shown >= 0 && shown < count())
        ensureWidgetVisible(labels[std::size_t(shown)]);
}

void DateList::setMarked(int index, bool isMarked)
{
    Date &date = dates[std::size_t(index)];
    date.isMarked = isMarked;
    labels[std::size_t(index)]->setStyleSheet(styleOf(date));
}

int DateList::neighbour(int index, int step) const
{
    for (int i = index + step; i >= 0 && i < count(); i += step) {
        if (dates[std::size_t(i)].reason.isEmpty())
            return i;
    }
    return -1;
}

void DateList::go(int index)
{
    if (index >= 0)
        emit wanted(index);
}

void DateList::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Left:
        go(neighbour(shown, -1));
        return;
    case Qt::Key_Down:
    case Qt::Key_Right:
        go(neighbour(shown, 1));
        return;
    case Qt::Key_Home:
        go(neighbour(-1, 1));
        return;
    case Qt::Key_End:
        go(neighbour(count(), -1));
        return;
    case Qt::Key_M:
        emit markWanted();
        return;
    default:
        QScrollArea::keyPressEvent(event);
    }
}
