#pragma once

#include "forms/days/directoryform.h"
#include "forms/multi/datemarks.h"
#include "forms/multi/datereading.h"

#include <map>
#include <memory>

class DateView;
class DaysInputs;
class LastValues;
namespace Ui {
class SearchNativeForm;
}

/// One stretch of the sky date by date: a list of the dates of a directory, and of the chosen one
/// the bands, their sum with its base line, and statistics. The dates next to it are read ahead.
class SearchNativeForm : public DirectoryForm {
    Q_OBJECT

public:
    /// @param directory  full path
    /// @param mode       "native"; no other is built
    /// @param parent     the main window
    SearchNativeForm(const QString &directory, const QString &mode, QWidget *parent);
    ~SearchNativeForm() override;

public slots:
    void showDate(int index);
    /// Marks the date that is shown, or takes its mark off.
    void toggleMark();

protected:
    void recordingsRead() override;

private:
    using Plan = std::shared_ptr<const Days::DayPlan>;

    void connectInputs();
    void makePlan();
    void takePlan(const Plan &made, const Compare::CompareParameters &parameters);
    void readDates();
    void take(const std::shared_ptr<const DateStretch> &stretch);
    void showCurrent();
    QStringList usedLines() const;
    QDate dateOf(int index) const;

    const std::unique_ptr<Ui::SearchNativeForm> ui;
    std::unique_ptr<LastValues> lastValues;
    DaysInputs *inputs = nullptr;
    DateView *view = nullptr;
    DateMarks marks;
    Plan plan;                             // null until the days are found
    Compare::CompareParameters parameters; // of the plan
    QString keptIn;
    std::map<int, std::shared_ptr<const DateStretch>> read; // the date that is shown and those near

    Jobs::Worker planner;
    Jobs::Worker reader;
};
