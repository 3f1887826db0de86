#include "app/shell/errorbox.h"

#include <QLayout>
#include <QMessageBox>
#include <QScreen>
#include <QTextDocument>
#include <algorithm>

namespace {

constexpr int gap = 12;          // pixels between the box and what is kept in sight
constexpr QSize frame = {8, 36}; // that the desktop puts around a box

QRect movedInto(QRect box, const QRect &screen)
{
    box.moveLeft(std::clamp(box.left(), screen.left(),
                            std::max(screen.left(), screen.right() - box.width() + 1)));
    box.moveTop(std::clamp(box.top(), screen.top(),
                           std::max(screen.top(), screen.bottom() - box.height() + 1)));
    return box;
}

} // namespace

void showError(QWidget *parent, const QString &text, const QString &reason)
{
    showErrorBeside(parent, {}, text, reason);
}

void showErrorBeside(QWidget *parent, const QRect &kept, const QString &text, const QString &reason)
{
    QMessageBox box(QMessageBox::Warning, "Error", text, QMessageBox::Ok, parent);
    // Paths may look like rich text.
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(Qt::mightBeRichText(reason) ? reason.toHtmlEscaped() : reason);
    if (parent && kept.isValid()) {
        box.ensurePolished();
        box.layout()->activate();
        const QWidget *const window = parent->window();
        const QRect screen =
            window->screen() ? window->screen()->availableGeometry() : window->frameGeometry();
        const QSize size = box.sizeHint() + frame;
        box.move(placeBeside(kept, size, window->frameGeometry(), screen).topLeft());
    }
    box.exec();
}

QRect placeBeside(const QRect &kept, QSize box, const QRect &window, const QRect &screen)
{
    QRect middle({}, box);
    middle.moveCenter(window.center());
    const QRect around = kept.adjusted(-gap, -gap, gap, gap);
    const QPoint corners[] = {middle.topLeft(),
                              {around.right() + 1, middle.top()},
                              {around.left() - box.width(), middle.top()},
                              {middle.left(), around.bottom() + 1},
                              {middle.left(), around.top() - box.height()}};
    for (const QPoint &corner : corners) {
        const QRect place = movedInto({corner, box}, screen);
        if (!place.intersects(kept))
            return place;
    }
    return movedInto({screen.bottomRight(), box}, screen);
}
