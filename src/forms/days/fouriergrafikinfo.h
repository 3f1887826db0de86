#pragma once

#include "analyses/days/fourierstack.h"

#include <QWidget>
#include <memory>

class LinesModel;
struct StackTexts;
namespace Ui {
class FourierGrafikInfo;
}

/// The panel at the right of the pictures of days: what lies under the pointer, the best lines with
/// all that is told of the chosen one, how its significance grows with the days, and what was used.
class FourierGrafikInfo : public QWidget {
    Q_OBJECT

public:
    explicit FourierGrafikInfo(QWidget *parent = nullptr);
    ~FourierGrafikInfo() override;

    /// Shows the lines of a stack; the chosen one stays the one of the same frequency.
    void setStack(const Days::FourierStack &newStack);
    void setUsed(const QString &text);
    /// Whether spectra or periodograms are shown.
    void setTexts(const StackTexts &texts);
    /// Leaves out the buttons of lists and files.
    void hideButtons();
    /// Leaves out what is told of several days as well.
    void showOnlyLines();

    /// Index of the chosen line; -1: none.
    int chosenLine() const;

public slots:
    void setCoords(const QString &text);

signals:
    /// The user clicked a line of the list or moved to it.
    void lineChosen(int line);
    void leaveOutWanted(int line);
    void interferenceWanted();
    void spectraWanted();
    void tablesWanted();

private:
    void describeLine();

    const std::unique_ptr<Ui::FourierGrafikInfo> ui;
    LinesModel *const model;
    Days::FourierStack stack; // without its bins
    bool isFilling = false;
};
