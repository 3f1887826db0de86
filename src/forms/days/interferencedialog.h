#pragma once

#include "analyses/days/interference.h"

#include <QDialog>

class QLabel;
class QPlainTextEdit;

/// The list of frequencies and periods that are left out, a line each. It is written when the user
/// accepts it; a line that cannot be read, or a file that cannot be written, keeps the dialog open
/// with the reason. A file that is not shown whole is never written over.
class InterferenceDialog : public QDialog {
    Q_OBJECT

public:
    /// @param path  of the list's file
    InterferenceDialog(const QString &path, QWidget *parent);

    void accept() override;

private:
    void tell(const QString &text);

    const QString filePath;
    QPlainTextEdit *const lines;
    QLabel *const problem;
};
