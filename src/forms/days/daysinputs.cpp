#include "forms/days/daysinputs.h"

#include "forms/days/sourcefield.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

namespace {

constexpr int pauseMs = 250;

} // namespace

DaysInputs::DaysInputs(QWidget *fields)
    : QObject(fields), form(fields), place(fields->findChild<PlaceFields *>("placeFields"))
{
    pause.setSingleShot(true);
    pause.setInterval(pauseMs);
    connect(&pause, &QTimer::timeout, this, &DaysInputs::changed);
}

void DaysInputs::watch(const QWidgetList &others)
{
    const auto begin = qOverload<>(&QTimer::start);
    const auto watchAll = [&]<typename Widget>(const QList<Widget *> &fields, auto signal) {
        for (Widget *const field : fields) {
            if (!others.contains(field))
                connect(field, signal, &pause, begin);
        }
    };
    watchAll(form->findChildren<QLineEdit *>(), &QLineEdit::textChanged);
    // Their arrows change the text without a word of the line edit.
    watchAll(form->findChildren<QSpinBox *>(), qOverload<int>(&QSpinBox::valueChanged));
    watchAll(form->findChildren<QComboBox *>(), qOverload<int>(&QComboBox::currentIndexChanged));
    watchAll(form->findChildren<QCheckBox *>(), &QCheckBox::toggled);
    connect(place, &PlaceFields::chosen, &pause, begin);
    if (auto *const nearest = form->findChild<QCheckBox *>("nearestBeam")) {
        connect(nearest, &QCheckBox::toggled, this, &DaysInputs::chooseBeam);
        connect(place, &PlaceFields::chosen, this, &DaysInputs::chooseBeam);
        chooseBeam();
    }
}

// The beam nearest to a source, or one by its numbers.
void DaysInputs::chooseBeam()
{
    auto *const nearest = form->findChild<QCheckBox *>("nearestBeam");
    nearest->setEnabled(place->isSource());
    for (const char *const name : {"module", "ray"})
        form->findChild<QSpinBox *>(name)->setEnabled(!place->isSource() || !nearest->isChecked());
}

void DaysInputs::showProblems(const std::vector<FieldProblem> &problems)
{
    FieldValues::showProblems(form, form->findChild<QLabel *>("problems"), shownProblems, problems);
    shownProblems = problems;
}

bool DaysInputs::accept(const std::vector<FieldProblem> &problems)
{
    showProblems(problems);
    if (problems.empty())
        return true;
    if (QWidget *const field = FieldValues::find(form, problems.front().field))
        field->setFocus();
    return false;
}

bool DaysInputs::showPlan(const Days::DayPlan &plan, const RecordingSet &set)
{
    showProblems(plan.problems);
    const RecordingEntry &first = set.entries.front();
    place->sourceField()->setSetting({Days::siteOf(first.path), first.begin.date(),
                                      form->findChild<QComboBox *>("points")->currentText().toInt(),
                                      first.header.tresolution});
    if (!plan.problems.empty())
        return false;
    auto *const module = form->findChild<QSpinBox *>("module");
    if (!module->isEnabled() && plan.beam.module > 0) {
        module->setValue(plan.beam.module);
        form->findChild<QSpinBox *>("ray")->setValue(plan.beam.ray);
    }
    return true;
}
