#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class TestForm;
}

/// An empty form: a place to try a widget in the real window.
class TestForm : public QWidget {
    Q_OBJECT

public:
    /// Takes over the central widget.
    ///
    /// @param title   shown above the empty area
    /// @param parent  the main window
    TestForm(const QString &title, QWidget *parent);
    ~TestForm() override;

private:
    const std::unique_ptr<Ui::TestForm> ui;
};
