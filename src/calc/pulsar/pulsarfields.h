#pragma once

#include "calc/analysis.h"
#include "calc/pulsar/pulsarresult.h"

using PulsarField = Field<PulsarParameters>;

/// The parameters of the actions, in the order that the headers of tables have them; those of the
/// fast folding search come last.
const std::vector<PulsarField> &pulsarFields();

/// One of them.
///
/// @param option  of the batch program, as "--dm"
const PulsarField &pulsarField(const QString &option);
