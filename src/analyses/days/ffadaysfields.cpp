#include "analyses/days/fourierdays.h"
#include "analyses/days/stretchfields.h"

// The parameters of the periodograms of days as forms, options and headers have them.

namespace Days {

const std::vector<FourierDaysField> &ffaDaysFields()
{
    static const std::vector<FourierDaysField> all = [] {
        const QStringList ofSpectra = {"--normalise", "--average", "--window", "--harmonics",
                                       "--equal-gains"};
        std::vector<FourierDaysField> fields;
        for (const FourierDaysField &field : fourierDaysFields()) {
            if (!ofSpectra.contains(field.option))
                fields.push_back(field);
        }
        for (const FourierDaysField &field : foldFields<FourierDaysParameters>(
                 "Stack periodograms of fast folding in place of spectra."))
            fields.push_back(field);
        return fields;
    }();
    return all;
}

} // namespace Days
