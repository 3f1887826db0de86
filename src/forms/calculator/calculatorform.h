#pragma once

#include "calculators/calculators.h"

#include <QVariant>
#include <QVector>
#include <QWidget>
#include <memory>

class LastValues;
class QGroupBox;
namespace Ui {
class CalculatorForm;
}

/// Four calculators that share one report: the beams' declinations, coordinates to the
/// telescope and back, and the size of a periodogram. No file is needed. Enter starts the
/// calculator in whose block the focus is.
class CalculatorForm : public QWidget {
    Q_OBJECT

public:
    /// Takes over the central widget.
    ///
    /// @param parent  the main window
    explicit CalculatorForm(QWidget *parent);
    ~CalculatorForm() override;

public slots:
    // Each is started by the button of its name.
    void calcdelta_send();
    void cat2zrt_send();
    void zrt2cat_send();
    void ffa_show_info();
    void ffa_show_periods();
    void fontIncrease();
    void fontDecrease();
    /// Back to the values of the start, without results.
    void clearForm();
    /// The whole report to the clipboard.
    void copyReport();
    /// The call of the batch program that gives the same report to the clipboard.
    void copyCommand();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectInputs();
    void showHelp();
    void showFfa(bool withPeriods);
    void show(const QGroupBox *block, const Calculator::Answer &answer);
    void setReportFont(int points);
    void pointFollowsTime();
    void timeFollowsPoint();
    void periodFollowsBins();
    QString recordingPath() const;
    void showWhetherRecordingExists();
    void openFoundRecording();

    const std::unique_ptr<Ui::CalculatorForm> ui;
    std::unique_ptr<LastValues> lastValues;
    QString command; // computes what is shown; empty when nothing is
    QVector<std::pair<QWidget *, QVariant>>
        presets; // initial values of all fields, results included
};
