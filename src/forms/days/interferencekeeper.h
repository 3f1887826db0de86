#pragma once

#include "analyses/days/interference.h"

#include <optional>
#include <vector>

class QWidget;

/// The user's list of interference as a form uses and changes it. Every change is written at once.
/// A list that cannot be read or written stays as it is, and a box tells why.
class InterferenceKeeper {
public:
    /// @param form  over whose window the boxes stand; outlives this
    explicit InterferenceKeeper(QWidget *form);

    /// The list as it was read or written last.
    const std::vector<Days::Interference> &entries() const { return known; }

    /// Reads the list.
    void read();
    /// Lets the user edit the list.
    /// @return whether the list is another now, as for what follows
    bool edit();
    /// Adds a frequency, in numbers that a reader of the list can grasp.
    ///
    /// @param binWidth  Hz, left out at either side
    bool leaveOut(double frequency, double binWidth, int harmonics);
    /// Takes out what leaves a frequency out, or one of its first multiples.
    ///
    /// @param tolerance  Hz
    bool countAgain(double frequency, double tolerance, int multiples);

private:
    std::optional<std::vector<Days::Interference>> listed() const;
    bool keep(const std::vector<Days::Interference> &entries, const QString &done);

    QWidget *const parent;
    std::vector<Days::Interference> known;
};
