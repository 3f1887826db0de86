#pragma once

#include "calc/pulsar/pulsarfields.h"

using PulsarAnalysis = Analysis<PulsarParameters>;

/// All analyses of one recording: the actions of PulsarCalculate. This is the one place that
/// lists them; a new one gets a row here, one in PulsarCalculate::findAction() and a file.
const std::vector<PulsarAnalysis> &pulsarAnalyses();

/// The analysis of an action; null when there is none of that name.
const PulsarAnalysis *findAnalysis(const QString &action);

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
