#pragma once

#include <QTableView>

class QSortFilterProxyModel;
class TableModel;

/// A table of a form. Ctrl+C copies the selected cells, or all where none is selected, as lines
/// with tabs between them; the titles that are shown are copied too.
class TableView : public QTableView {
    Q_OBJECT

public:
    explicit TableView(QWidget *parent = nullptr);

    /// Shows a table in its own order.
    ///
    /// @param table  outlives the view
    void showTable(TableModel *table);
    /// Shows it in an order that a click on the title of a column changes; at first in its own.
    void showSorted(TableModel *table);

    /// Rows of the table and of the view; -1 for -1.
    int tableRow(const QModelIndex &shown) const;
    QModelIndex shownIndex(int tableRow) const;

    /// Row titles are copied too: they are names, not numbers.
    void setCopiesRowTitles(bool copies) { copiesRowTitles = copies; }

    /// What copy() copies.
    QString selectedText() const;

public slots:
    void copy() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fitRows();
    QString titleOf(int section, Qt::Orientation orientation) const;

    QSortFilterProxyModel *sorted = nullptr;
    bool copiesRowTitles = false;
};
