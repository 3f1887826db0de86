#pragma once

#include "analyses/days/ffatrials.h"
#include "analyses/days/interference.h"
#include "analyses/sky/skyparameters.h"

#include <QByteArray>
#include <memory>

/// Which points of which recordings belong to which cell.
namespace Sky {

struct SkyRay {
    int module = 1; ///< the telescope's number
    int ray = 1;    ///< the same
    Days::Beam beam;
};

/// One passage of the stretches, as far as files that follow each other hold it: what is read at
/// once.
struct Passage {
    QDateTime begin; ///< of the first stretch, by the recordings' clock, even where no file has it
    std::vector<Days::DayPart> parts; ///< from the first point that is needed to the last one
    std::vector<int> firstPoints;     ///< of each stretch, index within the parts; -1: not held
    QString name;     ///< UTC of the first stretch that is held, as Days::dayName() gives it
    QByteArray state; ///< stands for size and time of its files

    int points() const;
};

/// The dates of a request, UTC of the begin; either may be invalid.
struct DateRange {
    QDate first;
    QDate last;

    bool contains(const QDate &date) const;
};

struct SkyPlan {
    SkyParameters parameters;
    Product product = Product::Fourier;
    std::vector<SkyRay> rays;
    std::vector<double> dispersions;               ///< pc/cm^3, ascending
    std::shared_ptr<const Days::FfaTrials> trials; ///< of folds; null in spectra
    int starts = 1;
    int startStep = 1024;          ///< points from one stretch to the next
    ObservationData header;        ///< step and bands of all days, no samples
    std::vector<Passage> passages; ///< by begin
    std::vector<Days::LeftOut> leftOut;
    std::vector<Days::Interference> interference; ///< that the user knows; not of the stacks
    DateRange dates;
    QStringList remarks;                ///< what a user should know of it
    std::vector<FieldProblem> problems; ///< for which nothing of the above can be used
    int reach = 1;       ///< points behind a stretch that the highest dispersion takes in
    int reachBefore = 0; ///< points before it, where opposite delays are wanted

    qint64 cells() const;
    int rayCount() const { return int(rays.size()); }
    bool knowsBeams() const; ///< of all rays
    /// UTC of the middle of a stretch.
    QDateTime middleOf(const Passage &passage, int start) const;
    /// What the ray points to then; no numbers where the beam is not known.
    Tools::SkyPosition directionOf(const SkyRay &ray, const QDateTime &middle) const;
    /// Bytes of all recordings that are read, each once.
    qint64 bytesRead(const RecordingSet &set) const;
};

/// @param set  of recordings, whose headers alone are looked at
SkyPlan planSky(const RecordingSet &set, const SkyParameters &parameters, Product product,
                const DateRange &dates = {});

} // namespace Sky
