#pragma once

#include "forms/sky/celldays.h"

#include <QWidget>
#include <memory>

class LinesModel;
namespace Ui {
class MapPanel;
}

/// The panel at the right of a map: what lies under the pointer, the lines of the stack of the
/// chosen cell, and what was used.
class MapPanel : public QWidget {
    Q_OBJECT

public:
    /// @param isFfa  the lines are those of folds
    explicit MapPanel(bool isFfa, QWidget *parent = nullptr);
    ~MapPanel() override;

    void setCoords(const QString &text);
    void setUsed(const QString &text);
    /// @param text  which cell it is
    void setCell(const QString &text, const std::vector<Days::FourierLine> &lines);
    void setCanSave(bool canSave);

signals:
    /// The user goes to a line; its frequency on the axis of the stack is that of its bin.
    void lineChosen(double bin);
    void daysWanted();
    void mapWanted();
    void pictureWanted();

private:
    const std::unique_ptr<Ui::MapPanel> ui;
    LinesModel *const model;
};
