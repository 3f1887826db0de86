#pragma once

#include "calc/pulsar/pulsarfields.h"
#include "data/observationdata.h"
#include "jobs/control.h"

struct PreparedSamples;

/// An analysis of one recording with the functions that it consists of; each is described in
/// actions.h.
struct PulsarAnalysis : Analysis<PulsarParameters> {
    using Header = ObservationData; ///< samples are not looked at

    /// Takes all points to the end of the recording unless it is told how many.
    bool goesToEnd = false;

    /// Everything for which it refuses its parameters; empty where it accepts them.
    std::vector<FieldProblem> (*check)(const Header &, const PulsarParameters &) = nullptr;
    /// Length of the stretch that it works on, for parameters that it accepts.
    int (*points)(const Header &, const PulsarParameters &) = nullptr;
    /// Memory of its series and its result, for parameters that it accepts.
    qint64 (*bytes)(const Header &, const PulsarParameters &) = nullptr;
    AnalysisOutcome (*compute)(const PreparedSamples &, const PulsarParameters &,
                               const Jobs::Control &) = nullptr;
};

/// All analyses of one recording: the actions of PulsarCalculate. This is the one place that
/// lists them; a new one gets a row here and a file of its name.
const std::vector<PulsarAnalysis> &pulsarAnalyses();

/// The analysis of an action; null when there is none of that name.
const PulsarAnalysis *findAnalysis(const QString &action);

/// Whether an action reads a parameter.
///
/// @param option  of the batch program, as "--dm"
bool reads(const QString &action, const QString &option);

/// Whether an action works on as many points as the form's panel asks for; the others show so many
/// points of what they give.
bool takesPoints(const QString &action);

/// Whether an action computes one value at many trial dispersions.
bool isScan(const QString &action);

/// An option of a command of the batch program.
struct CommandOption {
    QString option;          ///< of pulsarFields()
    QString help = {};       ///< where the command says more than the field
    int least = 0;           ///< allowed range, refused before a recording is read; unlimited where
    int most = 0;            ///< both are the same
    bool showsPreset = true; ///< the help names the preset behind its text
    QString excludes = {};   ///< option that cannot be given with it
    QString needs = {};      ///< option that must be given with it
};

/// A command of the batch program that runs analyses of one recording.
struct PulsarCommand {
    QString name;
    QString manual;                     ///< in lines of the help
    QString examples;                   ///< the same
    std::vector<CommandOption> options; ///< in the order of the help, after the places
};

/// The commands, in the order of the help. What the analyses of a command read is an option of it.
const std::vector<PulsarCommand> &pulsarCommands();
