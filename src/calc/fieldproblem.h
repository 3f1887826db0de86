#pragma once

#include <QString>

/// Why an analysis refuses its parameters.
struct FieldProblem {
    QString field; ///< name of the parameter's field in the form; empty where it concerns none
    QString text;  ///< what is wrong and what is allowed, in lines as a box shows them

    /// The text in one line, as a log shows it.
    QString line() const { return QString(text).replace('\n', ' '); }
};
