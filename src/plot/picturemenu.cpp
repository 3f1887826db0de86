#include "plot/picturemenu.h"

#include "picture/plotexport.h"
#include "plot/savedialog.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

PictureMenu::PictureMenu(QWidget *widget) : QObject(widget), picture(widget)
{
    picture->installEventFilter(this);
    setDrawing([this] { return picture->size(); },
               [this](QPainter &painter) {
                   picture->render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
               });
}

void PictureMenu::setDrawing(std::function<QSize()> size, std::function<void(QPainter &)> drawing)
{
    drawnSize = std::move(size);
    draw = std::move(drawing);
}

QString PictureMenu::savePicture(const QString &path) const
{
    return Plot::saveDrawing(path, {drawnSize(), picture->objectName(), draw});
}

bool PictureMenu::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != picture || event->type() != QEvent::ContextMenu)
        return QObject::eventFilter(watched, event);
    QMenu menu(picture);
    menu.addAction("Copy picture", this, &PictureMenu::copyPicture);
    menu.addAction("Save picture...", this, &PictureMenu::askAndSavePicture);
    if (!picture->actions().isEmpty()) {
        menu.addSeparator();
        menu.addActions(picture->actions());
    }
    menu.exec(static_cast<QContextMenuEvent *>(event)->globalPos());
    return true;
}

void PictureMenu::copyPicture()
{
    const qreal ratio = picture->devicePixelRatioF();
    QPixmap pixmap(drawnSize() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::white);
    QPainter painter(&pixmap);
    draw(painter);
    painter.end();
    QApplication::clipboard()->setPixmap(pixmap);
}

void PictureMenu::askAndSavePicture()
{
    const QString path =
        Plot::askForPath(picture, "Save picture", saveFolder, "picture.png", Plot::pictureFilters);
    if (path.isEmpty())
        return;
    if (const QString failure = savePicture(path); !failure.isEmpty()) {
        QMessageBox::warning(picture, "Error", failure);
        return;
    }
    saveFolder = QFileInfo(path).path();
    emit fileSaved(path);
}
