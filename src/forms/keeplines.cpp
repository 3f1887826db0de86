#include "forms/keeplines.h"

#include <QEvent>
#include <QLabel>

namespace {

class LineKeeper : public QObject {
public:
    LineKeeper(QLabel *kept, int count) : QObject(kept), label(kept), lines(count)
    {
        label->installEventFilter(this);
        keep();
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::FontChange)
            keep();
        return QObject::eventFilter(watched, event);
    }

private:
    void keep() { label->setMinimumHeight(lines * label->fontMetrics().lineSpacing()); }

    QLabel *const label;
    const int lines;
};

} // namespace

void keepLines(QLabel *label, int lines)
{
    new LineKeeper(label, lines); // the label owns it
}
