#pragma once

#include <QWidget>

/// A top-level window that shows one text, scrolled vertically. It is as wide as the text
/// and deletes itself when closed.
class PopupWindow : public QWidget {
    Q_OBJECT

public:
    explicit PopupWindow(const QString &text);
};
