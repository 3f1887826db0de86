#pragma once

#include <QLabel>

/// A label for the path of the file or directory that a form shows. Its text is the whole of it
/// and can be copied from its context menu; shown is one line in which folders in the middle give
/// way to "…", the name at the end last. The tool tip has the path as the desktop writes it.
class PathLabel : public QLabel {
    Q_OBJECT

public:
    explicit PathLabel(QWidget *parent = nullptr);

    /// Shows "File: " and the path with a blank after every slash.
    void showFile(const QString &path);
    /// The same for a directory.
    void showDirectory(const QString &path);

    /// As the desktop writes it.
    const QString &path() const { return whole; }

    /// `text` where it is no wider than `width` pixels of that font, else shortened to it.
    static QString shortened(const QString &text, const QFontMetrics &font, int width);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void show(const QString &word, const QString &path);

    QString whole; // path
};
