#pragma once

#include "analyses/pulses/pulsesearch.h"
#include "analyses/sky/skysearch.h"
#include "analyses/timing/arrivaltimes.h"
#include "forms/recordingform.h"

#include <QTimer>

class PeriodView;
class PulseView;
class PulsesModel;
class QLabel;
class QTabWidget;
class TableView;
class VerdictBar;
namespace Ui {
class TransientForm;
}

/// The search of one recording for single pulses: parameters on the left, the pulses that were
/// found in a table, and below it five linked pictures of the chosen one, or the period that the
/// arrival times of the accepted ones have. The table fills in while the search runs; what a
/// stopped search found stays. Verdicts and notes are kept beside the recording, or in the user's
/// folder, after each of them, and shown again.
///
/// Construction empties the central widget, reads the file and installs the form. A file that
/// cannot be used is reported in a box; the central widget then stays empty and the form
/// deletes itself. The same, without a box, when the user stops the reading.
class TransientForm : public RecordingForm {
    Q_OBJECT

public:
    /// @param filePath  full path of a recording
    /// @param parent    the main window
    TransientForm(const QString &filePath, QWidget *parent);
    ~TransientForm() override;

public slots:
    /// Starts a search beside the window and ends the one that runs. Parameters with problems are
    /// not searched: the first such field gets the focus.
    void search();

protected:
    void run() override { search(); }
    QString command() override;
    void endWork(const Jobs::Ending &ending) override;

private:
    // What the worker hands over: pulses while it runs, at last all that is told of the search.
    struct Found {
        std::vector<Pulses::Pulse> pulses;
        std::shared_ptr<const Pulses::PulseResult> whole; // null until the end
    };

    QWidget *makeMiddle();
    QWidget *makeTable();
    void connectInputs();
    void showEstimate();
    std::vector<FieldProblem> readParameters(Pulses::PulseParameters &parameters);
    bool showProblems(const std::vector<FieldProblem> &problems);
    void take(const Found &found);
    void showFound(const Found &found);
    void showPulses(std::vector<Pulses::Pulse> pulses);
    void restoreVerdicts();
    void keepVerdicts();
    void step(int way);
    void decide(Sky::Verdict verdict);
    void writeNote();
    void saveTable();
    void showPulse();
    QString textOf(const Pulses::Pulse &pulse) const;
    Timing::ArrivalTimes arrivalTimes() const;
    int chosenRow() const;

    const std::unique_ptr<Ui::TransientForm> ui;
    PulsesModel *const model;
    TableView *table = nullptr;
    VerdictBar *buttons = nullptr;
    QLabel *told = nullptr;   // of the search
    QLabel *chosen = nullptr; // of the pulse
    QTabWidget *tabs = nullptr;
    PulseView *pictures = nullptr;
    PeriodView *period = nullptr;
    QString verdictsFile;
    QString verdictsProblem; // of the file; it is not overwritten then
    Pulses::PulseParameters searched;
    Pulses::PulsePlan plan; // of the last search
};
