#pragma once

#include "analyses/profiles/profiletables.h"
#include "forms/days/stacktexts.h"

/// What the form of average profiles says, without widgets.

/// Of the list of days and of the picture.
const StackTexts &profileTexts();

/// What a plan found: how many days, and what they are folded at.
QString planText(const Profiles::ProfilePlan &plan, qint64 recordings);

/// What was found out, a line each, but for the S/N and what the list of days tells.
///
/// @param keptPath  folder of the products
QString resultText(const Profiles::ProfileOutcome &outcome, const Profiles::ProfilePlan &plan,
                   const QString &keptPath);

/// One day of an outcome under the pointer, in lines.
QString dayText(const Profiles::ProfileOutcome &outcome, int day);

/// A measure of significance beside its Gaussian sigma: "12.3 (9.8 σ)".
QString snrText(double value, double sigma);
