#pragma once

#include "forms/days/daystacking.h"
#include "forms/days/directoryform.h"
#include "forms/days/fourierjobs.h"
#include "forms/days/interferencekeeper.h"

#include <memory>
#include <vector>

class DaysInputs;
class DaysModel;
class LastValues;
class SkyPage;
class SpectrumView;
struct StackTexts;
namespace Ui {
class FourierForm;
}

/// Spectra of one place of the sky on all days of a directory, or their periodograms of fast
/// folding, and their stack: inputs and the list of days on the left, the pictures in the middle,
/// what is told of them on the right. Recordings are read once; a day that is switched only changes
/// the stack. Maps and searches have a page of their own.
class FourierForm : public DirectoryForm {
    Q_OBJECT

public:
    /// @param directory  full path
    /// @param ffa        1: periodograms instead of Fourier spectra
    /// @param map        1: a map of harmonics
    /// @param search     1: a search for signals. The three are those of a menu command
    ///                   that is enabled
    /// @param parent     the main window
    FourierForm(const QString &directory, int ffa, int map, int search, QWidget *parent);
    ~FourierForm() override;

public slots:
    /// Reads the days beside the window and ends the reading that runs. Inputs with problems are
    /// not computed: the first such field gets the focus.
    void compute();
    void copyCommand();
    /// Maps that have no size of their own follow the window.
    void fitToWindow();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void recordingsRead() override;

private:
    void showSky(const SurveyFlags &flags);
    void connectInputs();
    void fillPresets();
    Days::FourierDaysParameters readParameters(std::vector<FieldProblem> &problems) const;
    void plan();
    void takePlan(const Days::DayPlan &plan);
    void showSearch(const Days::DayPlan &plan);

    void takeNews(SpectraNews news);
    void completeRequest(StackRequest &request) const;
    void showStack();
    void showDays();
    void showPowers();
    void leaveOut(int line);
    void leaveOutFrequency(double frequency);
    void countAgain(double frequency, double tolerance);
    void editInterference();
    void saveSpectra();
    void saveTables();

    SkyPage *sky = nullptr;                    // of maps and searches, in place of all that follows
    const Days::FourierDaysAnalysis &analysis; // whose stacks maps and searches look into, too
    const StackTexts &words;
    const std::unique_ptr<Ui::FourierForm> ui;
    std::unique_ptr<LastValues> lastValues;
    DaysInputs *inputs = nullptr;
    SpectrumView *view = nullptr;
    DaysModel *const days;

    InterferenceKeeper interference;
    DayStacking stacking;
    Jobs::Worker planner;
};
