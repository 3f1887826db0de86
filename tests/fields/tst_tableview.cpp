#include "fields/tablemodel.h"
#include "fields/tableview.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QStringList>

namespace {

// Names with numbers whose order as texts is another, one of them missing.
class Peaks : public TableModel {
public:
    using TableModel::TableModel;

    std::vector<QStringList> cells = {{"b", "9"}, {"a", "10"}, {"C", "-"}};

protected:
    int rows() const override { return int(cells.size()); }
    int columns() const override { return 2; }
    Column column(int index) const override
    {
        return index == 0 ? Column{"name"} : Column{"width\nms", "Full width", true};
    }
    QString text(int row, int column) const override { return cells[std::size_t(row)][column]; }
};

} // namespace

class TestTableView : public QObject {
    Q_OBJECT

private slots:
    void copies_data();
    void copies();
    void sorts();
};

void TestTableView::copies_data()
{
    QTest::addColumn<QList<QPoint>>("selected"); // row and column
    QTest::addColumn<bool>("withTitles");
    QTest::addColumn<bool>("withRowTitles");
    QTest::addColumn<QString>("text");
    QTest::newRow("all where nothing is selected")
        << QList<QPoint>() << true << false << "name\twidth, ms\nb\t9\na\t10\nC\t-\n";
    QTest::newRow("a cell with its title")
        << QList<QPoint>{{1, 1}} << true << false << "width, ms\n10\n";
    QTest::newRow("cells apart keep their places")
        << QList<QPoint>{{0, 0}, {2, 1}} << true << false << "name\twidth, ms\nb\t\n\t-\n";
    QTest::newRow("titles that are hidden are left out")
        << QList<QPoint>{{1, 0}, {1, 1}} << false << false << "a\t10\n";
    QTest::newRow("names of rows")
        << QList<QPoint>{{1, 1}} << true << true << "\twidth, ms\n2\t10\n";
}

void TestTableView::copies()
{
    QFETCH(QList<QPoint>, selected);
    QFETCH(bool, withTitles);
    QFETCH(bool, withRowTitles);
    Peaks peaks;
    TableView view;
    view.showTable(&peaks);
    view.horizontalHeader()->setHidden(!withTitles);
    view.setCopiesRowTitles(withRowTitles);
    for (const QPoint &cell : selected)
        view.selectionModel()->select(peaks.index(cell.x(), cell.y()), QItemSelectionModel::Select);
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    QTEST(QApplication::clipboard()->text(), "text");
}

// Numbers by their size, texts whatever their case; rows keep their own numbers.
void TestTableView::sorts()
{
    Peaks peaks;
    TableView view;
    view.showSorted(&peaks);
    const auto shown = [&](int column) {
        QStringList texts;
        for (int row = 0; row < 3; ++row)
            texts << view.model()->index(row, column).data().toString();
        return texts;
    };
    QCOMPARE(shown(0), (QStringList{"b", "a", "C"}));
    view.sortByColumn(1, Qt::DescendingOrder);
    QCOMPARE(shown(1), (QStringList{"10", "9", "-"}));
    QCOMPARE(view.tableRow(view.model()->index(0, 0)), 1);
    QCOMPARE(view.shownIndex(0).row(), 1);
    view.sortByColumn(0, Qt::AscendingOrder);
    QCOMPARE(shown(0), (QStringList{"a", "b", "C"}));
}

ZRT_GUI_TEST_MAIN(TestTableView)
#include "tst_tableview.moc"
