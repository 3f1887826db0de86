#pragma once

#include "forms/days/directoryform.h"
#include "forms/profiles/optimiseview.h"
#include "forms/profiles/profilejobs.h"

#include <memory>
#include <vector>

class DaysInputs;
class DaysModel;
class LastValues;
class ProfileView;
namespace Ui {
class ProfileForm;
}

/// Average profiles of all days of a directory: inputs and the list of days on the left, the days
/// and their average in the middle, their S/N on the right. Recordings are read once; a day that is
/// switched, and all that stands under "Average", only adds up again.
///
/// Mode "periods" tries periods, and periods with dispersions; "dispersions" tries dispersions.
class ProfileForm : public DirectoryForm {
    Q_OBJECT

public:
    /// @param directory  full path
    /// @param mode       "periods" or "dispersions"
    /// @param parent     the main window
    ProfileForm(const QString &directory, const QString &mode, QWidget *parent);
    /// The current profile form of the settings leaves its options there.
    ~ProfileForm() override;

public slots:
    /// Folds the days beside the window. Inputs with problems are not computed: the first such
    /// field gets the focus.
    void compute();
    void copyCommand();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void recordingsRead() override;

private:
    using Products = std::shared_ptr<const ProfileProducts>;
    using Outcome = std::shared_ptr<const Profiles::ProfileOutcome>;

    void connectInputs();
    void connectJobs();
    void takeOptions();
    void fillPresets();
    Profiles::ProfileParameters readParameters(std::vector<FieldProblem> &problems) const;
    void plan();
    void takePlan(const Profiles::ProfilePlan &plan);
    void takeProducts(const Products &made);
    Profiles::StackChoice choice() const;
    void average();
    void takeOutcome(const Outcome &made);
    void showDays();
    void switchDay(int row, bool isOn);
    void switchAll(bool isOn);
    void takeValues(const OptimiseView::Place &place);
    void takePeriod(double period, const Profiles::ProfileDay &first);
    void takeBack();
    QStringList daysOff() const;
    void saveTables();
    void saveTim();
    void chooseParFile();

    const std::unique_ptr<Ui::ProfileForm> ui;
    std::unique_ptr<LastValues> lastValues;
    DaysInputs *inputs = nullptr;
    ProfileView *view = nullptr;
    DaysModel *const days;

    Products products;
    Profiles::ProfilePlan used; // of the products, with the parameters of the average
    Outcome outcome;
    std::vector<bool> counts;                 // of each day, as the user wants
    std::optional<OptimiseView::Place> taken; // in place of what the days were folded at

    Jobs::Worker planner;
    Jobs::Worker adder; // of averages and trials
    JobProgress adding;
};
