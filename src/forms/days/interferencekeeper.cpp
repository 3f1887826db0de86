#include "forms/days/interferencekeeper.h"

#include "app/shell/errorbox.h"
#include "app/shell/statusline.h"
#include "forms/days/interferencedialog.h"
#include "picture/ticks.h"

#include <QStringList>
#include <QWidget>
#include <cmath>

InterferenceKeeper::InterferenceKeeper(QWidget *form) : parent(form)
{}

void InterferenceKeeper::read()
{
    known = listed().value_or(std::vector<Days::Interference>());
}

bool InterferenceKeeper::edit()
{
    InterferenceDialog dialog(Days::interferencePath(), parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    read();
    return true;
}

bool InterferenceKeeper::leaveOut(double frequency, double binWidth, int harmonics)
{
    const double step = Plot::roundStepAbove(binWidth / 100);
    const auto rounded = [step](double value) {
        return step < 1 ? std::round(value / step) / std::round(1 / step) : value;
    };
    const Days::Interference entry = {rounded(frequency), false, rounded(binWidth), harmonics, {}};
    std::optional<std::vector<Days::Interference>> entries = listed();
    if (!entries)
        return false;
    entries->push_back(entry);
    return keep(*entries, "Left out: " + entry.text());
}

bool InterferenceKeeper::countAgain(double frequency, double tolerance, int multiples)
{
    std::optional<std::vector<Days::Interference>> entries = listed();
    if (!entries)
        return false;
    QStringList texts;
    for (int multiple = 1; multiple <= multiples; ++multiple) {
        for (const Days::Interference &entry :
             Days::takeOutInterference(*entries, multiple * frequency, tolerance))
            texts << entry.text();
    }
    return keep(*entries, "Counts again: " + texts.join("; "));
}

std::optional<std::vector<Days::Interference>> InterferenceKeeper::listed() const
{
    const Days::InterferenceList list = Days::readInterference(Days::interferencePath());
    if (list.problem.isEmpty())
        return list.entries;
    showError(parent->window(), "The list of interference cannot be used.", list.problem);
    return {};
}

bool InterferenceKeeper::keep(const std::vector<Days::Interference> &entries, const QString &done)
{
    if (const WriteFailure failure = Days::writeInterference(Days::interferencePath(), entries)) {
        showError(parent->window(), "The list of interference was not written.", failure.text());
        return false;
    }
    StatusLine::show(done);
    known = entries;
    return true;
}
