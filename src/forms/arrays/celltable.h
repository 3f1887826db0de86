#pragma once

#include <QTableView>

struct NumberFile;

/// All cells of a text file of numbers, words included. Copying puts the selected cells on the
/// clipboard as lines with tabs between them, below the names of their columns.
class CellTable : public QTableView {
    Q_OBJECT

public:
    /// @param numbers  is only read and outlives the table
    explicit CellTable(const NumberFile &numbers, QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString selectedText() const;

    const NumberFile &file;
};
