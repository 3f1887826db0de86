#pragma once

#include "data/recordingfile.h"
#include "fields/tablemodel.h"

#include <utility>
#include <vector>

/// The lines of a passport as names and values: those that describe the recording first, the
/// others by name. A value that is cut off stands whole in its tool tip.
class PassportModel : public TableModel {
    Q_OBJECT

public:
    explicit PassportModel(const Passport &passport, QObject *parent = nullptr);

protected:
    int rows() const override { return int(lines.size()); }
    int columns() const override { return 2; }
    Column column(int index) const override { return {index == 0 ? "Name" : "Value"}; }
    QString text(int row, int column) const override;
    QVariant look(int row, int column, int role) const override;

private:
    std::vector<std::pair<QString, QString>> lines;
};
