#pragma once

#include "analyses/days/dayspectra.h"
#include "batch/tablework.h"

namespace Batch {

/// What is written beside the picture.
struct StackPictureText {
    QString name; ///< of what was stacked
    QString key;  ///< kept in the file, see requestKey()
};

/// The significance of every bin or period of a stack.
Plot::PictureBytes curvePicture(const Days::FourierStack &stack, const OutputOptions &output,
                                const StackPictureText &text);

/// Powers, or the best S/N, of all days in colours, a row per day.
///
/// @param chosen  which of the days are in the stack
Plot::PictureBytes daysPicture(const std::vector<Days::FourierDay> &days,
                               const std::vector<bool> &chosen, const Days::FourierStack &stack,
                               const OutputOptions &output, const StackPictureText &text);

} // namespace Batch
