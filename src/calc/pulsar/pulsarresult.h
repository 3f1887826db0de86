#pragma once

#include "calc/ffaresult.h"
#include "calc/ffasearch.h"
#include "calc/fieldproblem.h"
#include "calc/pulsar/cutlines.h"
#include "results/report.h"

#include <QString>
#include <QStringList>
#include <array>
#include <memory>
#include <vector>

struct BandFold;

/// What the pulsar form asks for, as typed.
struct PulsarParameters {
    int module = 1;        ///< from 1
    int ray = 1;           ///< from 1
    int channel = 1;       ///< from 1
    double dispersion = 0; ///< pc/cm^3
    double period = 0;     ///< s
    int firstPoint = 0;    ///< first sample of the stretch, from 0
    QString startTime;     ///< UTC that gave the first point; empty: the point was typed
    double startDelta = 0; ///< points between the starts of "sumTimeDispersions"; 0: a
                           ///< sixteenth of the recording
    int points = 0;        ///< wanted length of "showNative", "sumPeriod", "sumPeriodOfBands",
                    ///< "sumChannels" (and "sumChannelsDemoNoise") and "createFFA"; 0: their own
    QString channelsOff;     ///< numbers of channels, "4,21", that sums leave out; empty: none
    bool deleteStep = false; ///< take jumps of the level out of a working copy
    int averageCount = 0;    ///< halvings before the transform
    bool withNull = false;   ///< zero padding to double length
    int harmonicNum = 0;     ///< index of the spectrum value reported as first harmonic
    int sigmaMultiple = 6;   ///< threshold for listing harmonics
    std::array<double, 4> dispersions = {}; ///< pc/cm^3, compared by "sum4Dispersions"
    QString noise = "polinom5"; ///< "polinom5", "median", "backSum"; anything else: no baseline
    bool normalise = false;     ///< divide by sigma after the baseline is removed
    bool deductNoise = false;   ///< "sumChannelsDemoNoise": show the sum less its baseline
    QString cut;                ///< hum and lines to take out before a search, see cutlines.h
    FfaParameters ffa;          ///< "createFFA"
};

/// What the X values of a result stand for: value i is first + i x step.
struct PulsarAxis {
    enum class Kind {
        Points,     ///< index within the recording
        Frequency,  ///< Hz
        Dispersion, ///< pc/cm^3
        Phase       ///< of the period, 0 to 1
    };
    Kind kind = Kind::Points;
    double first = 0;
    double step = 1;
    double period = 0; ///< s, for phases
};

/// One of several results that an action compares: a curve of its own with its report.
struct PulsarMultiResult {
    QString name;
    Results::Report report;
    std::vector<std::vector<float>> curves; ///< to show alone: the curve and its fit
    QStringList names;                      ///< one per curve
};

/// What a form shows of an action.
struct PulsarResult {
    std::vector<std::vector<float>> curves;
    std::vector<bool> visible; ///< one per curve: whether it is drawn
    QStringList names;         ///< one per curve
    int points = 0;            ///< number of X values
    int stretch = 0;           ///< points of the recording that they were made from
    std::vector<int> starts;   ///< first points, where the action compares several
    int jumps = 0;             ///< of the level, taken out
    PulsarAxis axis;
    std::vector<int> markers; ///< X indices where the level jumps and the jump was taken out
    Results::Report report;   ///< what was computed, in the program's own texts
    QString nonFinite;        ///< which samples are no finite numbers; empty where all are
    std::vector<Results::Report> remarks; ///< what else the user should know, one paragraph each
    QString times; ///< what times and periods are counted in; empty where there are none
    std::vector<PulsarMultiResult> multi;  ///< where the action compares results: one per curve
    std::shared_ptr<const FfaResult> ffa;  ///< of "createFFA"
    std::shared_ptr<const BandFold> bands; ///< of "sumPeriodOfBands"
    std::vector<Pulsar::CutBand> cut;      ///< of "createFFA": what was taken out of the series

    QString description() const { return report.plainText(); }
    /// What stands below the report: on samples, the remarks, on times.
    std::vector<Results::Report> notes() const;
};

/// How an action ended.
struct AnalysisOutcome {
    PulsarResult result;                ///< as far as it was built; whole where isWhole()
    std::vector<FieldProblem> problems; ///< why it was refused, in the order of the checks; empty
                                        ///< after a success
    bool isStopped = false;             ///< on request

    bool isWhole() const { return problems.empty() && !isStopped; }
};
