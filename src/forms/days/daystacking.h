#pragma once

#include "forms/days/fourierjobs.h"
#include "jobs/worker.h"

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// The products of days as they come in, which of the days count, and their stack. The stack is
/// made anew beside the window whenever one of these changes; the recordings are not read again.
class DayStacking : public QObject {
    Q_OBJECT

public:
    /// Fills in what only the form knows: the parameters that need no reading, the frequency whose
    /// harmonics are marked, and what is left out.
    using Complete = std::function<void(StackRequest &request)>;

    explicit DayStacking(Complete complete, QObject *parent = nullptr);

    /// Forgets the days before and begins with others, of which none has been read yet.
    void begin(const DaySpectra &begun);
    /// Adds what was read of a day.
    void add(SpectraNews news);
    /// The user has decided that a day counts, or does not. Indices of no day are ignored.
    void decide(int day, bool isOn);
    /// The same of all days; without a value the rule decides again.
    void decideAll(std::optional<bool> isOn);
    /// What a stack depends on has changed; changes that come close together make one stack.
    void restackSoon();
    void restack();
    void stop();

    /// The days begun with; null before the first of them.
    std::shared_ptr<const DaySpectra> spectra() const { return read; }
    /// What the user has decided of a day.
    std::optional<bool> decided(int day) const { return decisions[std::size_t(day)]; }
    /// The last stack of these days; null before the first of them.
    const std::shared_ptr<const StackOutcome> &outcome() const { return last; }
    /// Days that have been read and do not count in that stack.
    QStringList daysOff() const;

signals:
    /// There is another outcome().
    void stacked();
    void failed(const QString &problem);

private:
    void addArrived();
    void restackAnew();

    const Complete completeRequest;
    std::shared_ptr<DaySpectra> read; // changes only while the worker is idle
    std::vector<SpectraNews> arrived; // not in the spectra yet
    std::vector<std::optional<bool>> decisions;
    std::shared_ptr<const StackOutcome> last;
    bool isStale = false; // the stack is not that of what is known now
    QTimer timer;         // collects changes that come close together
    Jobs::Worker worker;
};
