#pragma once

#include "analyses/compare/comparedays.h"
#include "forms/days/directoryform.h"

#include <memory>
#include <vector>

class CompareView;
class DaysInputs;
class DaysModel;
class LastValues;
namespace Ui {
class NativeMultiForm;
}

/// Up to 64 days of a directory under each other on one axis of sidereal time, their mean day, and
/// where single days differ from it: inputs and the list of days on the left, the pictures in the
/// middle, the differences on the right. Recordings are read once; a day that is switched only
/// changes the comparison.
class NativeMultiForm : public DirectoryForm {
    Q_OBJECT

public:
    /// @param directory  full path
    /// @param parent     the main window
    NativeMultiForm(const QString &directory, QWidget *parent);
    ~NativeMultiForm() override;

public slots:
    /// Reads the days beside the window. Inputs with problems are not computed: the first such
    /// field gets the focus.
    void compute();
    void copyCommand();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void recordingsRead() override;

private:
    using Products = std::shared_ptr<const Compare::CompareProducts>;
    using Compared = std::shared_ptr<const Compare::Comparison>;

    void connectInputs();
    void fillPresets();
    void plan();
    void takePlan(const Compare::ComparePlan &plan);
    void takeProducts(const Products &made);
    void compare();
    void takeComparison(const Compared &made, const std::vector<bool> &counts);
    void showDays();
    void switchDay(int row, bool isOn);
    void switchAll(bool isOn);
    void open(int day, int point);
    QStringList daysOff() const;
    void saveTables();

    const std::unique_ptr<Ui::NativeMultiForm> ui;
    std::unique_ptr<LastValues> lastValues;
    DaysInputs *inputs = nullptr;
    CompareView *view = nullptr;
    DaysModel *const days;

    Products products;
    Compared comparison;
    std::vector<bool> counts;   // of each day, as the user wants
    std::vector<bool> compared; // of each day, as the comparison has it

    Jobs::Worker planner;
    Jobs::Worker comparer;
};
