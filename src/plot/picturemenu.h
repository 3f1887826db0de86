#pragma once

#include <QObject>
#include <QString>

class QWidget;

/// The right mouse button's commands of a widget that paints a picture of its own: copy it, or
/// save it as PNG, SVG or PDF, as PulsarGrafik offers them for a plot. Belongs to the widget.
class PictureMenu : public QObject {
    Q_OBJECT

public:
    explicit PictureMenu(QWidget *picture);

    /// Where the dialog starts; it goes on where the last file was saved.
    void setSaveFolder(const QString &folder) { saveFolder = folder; }

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
    QString saveFolder;
};
