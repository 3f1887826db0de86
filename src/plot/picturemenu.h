#pragma once

#include <QObject>
#include <QSize>
#include <QString>
#include <functional>

class QPainter;
class QWidget;

/// The right mouse button's commands of a widget that paints itself: copy what it shows, or save
/// it as PNG, SVG or PDF, as PulsarGrafik offers them for a plot; the widget's own actions follow.
/// The widget owns the menu.
class PictureMenu : public QObject {
    Q_OBJECT

public:
    explicit PictureMenu(QWidget *picture);

    /// Sets the folder in which the first dialog starts; later ones start where the last file was
    /// saved.
    void setSaveFolder(const QString &folder) { saveFolder = folder; }

    /// Draws something else than the widget itself, say with an axis that it shares on the screen.
    ///
    /// @param size  of what is drawn, asked each time
    void setDrawing(std::function<QSize()> size, std::function<void(QPainter &)> draw);

    /// Writes what the widget shows, see Plot::saveDrawing.
    QString savePicture(const QString &path) const;

signals:
    /// A picture was written to this path.
    void fileSaved(const QString &path);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void copyPicture();
    void askAndSavePicture();

    QWidget *const picture;
    std::function<QSize()> drawnSize;
    std::function<void(QPainter &)> draw;
    QString saveFolder;
};
