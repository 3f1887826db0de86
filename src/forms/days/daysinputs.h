#pragma once

#include "analyses/days/dayplace.h"
#include "forms/days/placefields.h"
#include "forms/fieldvalues.h"

#include <QTimer>
#include <QWidgetList>

/// The fields of a form over days. It tells a pause after a change of any of them, reads them,
/// shows what is wrong with them, and fills in what a plan made of them finds. The form has
/// "placeFields" and "problems", and where one beam is chosen "module", "ray" and "nearestBeam".
class DaysInputs : public QObject {
    Q_OBJECT

public:
    /// @param fields  with its widgets; owns this
    explicit DaysInputs(QWidget *fields);

    /// Begins to tell of changes.
    ///
    /// @param others  fields and switches that ask for nothing new
    void watch(const QWidgetList &others = {});
    /// The pause that has begun is not told: what stands in the fields is read now.
    void stopWaiting() { pause.stop(); }

    template <typename Parameters>
    Parameters read(const Analysis<Parameters> &analysis, std::vector<FieldProblem> &problems) const
    {
        const auto counts = [this](const QWidget *field) { return place->counts(field); };
        const Parameters parameters = FieldValues::readAll(form, analysis, counts, problems);
        place->addProblems(parameters, problems);
        return parameters;
    }

    /// Shows these in place of those before.
    void showProblems(const std::vector<FieldProblem> &problems);
    bool hasProblems() const { return !shownProblems.empty(); }
    /// Shows them; with any, the first field at fault gets the focus.
    ///
    /// @return whether there are none
    bool accept(const std::vector<FieldProblem> &problems);

    /// Shows the problems of a plan and what it tells of the source and the beam.
    ///
    /// @return whether the plan can be used
    bool showPlan(const Days::DayPlan &plan, const RecordingSet &set);

signals:
    /// A quarter of a second has passed since a field was changed.
    void changed();

private:
    void chooseBeam();

    QWidget *const form;
    PlaceFields *const place;
    std::vector<FieldProblem> shownProblems;
    QTimer pause;
};
