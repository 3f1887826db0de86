#include "app/shell/recordingmodel.h"

#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QSortFilterProxyModel>

namespace {

RecordingEntry entryAt(const QString &path, const QString &begin, int npoints)
{
    RecordingEntry entry;
    entry.path = path;
    entry.begin = QDateTime::fromString(begin, Qt::ISODateWithMs);
    entry.state = RecordingState::Whole;
    entry.size = 5 << 20;
    entry.header.npoints = npoints;
    entry.header.tresolution = 12.4928 / 1000;
    entry.header.modules = 3;
    entry.header.moduleNumbers = {2, 4, 5};
    entry.header.rays = 8;
    entry.header.channels = 3;
    entry.header.fbands = {109.039, 111.5};
    return entry;
}

} // namespace

class TestRecordingModel : public QObject {
    Q_OBJECT

private slots:
    void rowsShowWhatHeadersSay();
};

void TestRecordingModel::rowsShowWhatHeadersSay()
{
    RecordingModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    RecordingEntry unreadable;
    unreadable.path = "/data/b.pnt";
    unreadable.problem = "/data/b.pnt is a pipe.";
    model.setEntries({entryAt("/data/a.pnt", "2000-01-01T12:00:00.001Z", 1000), unreadable,
                      entryAt("/data/c.pnt", "2000-01-01T12:00:00.000Z", 9)});
    const auto rowTexts = [&](int row) {
        QStringList texts;
        for (int column = 0; column < model.columnCount(); ++column)
            texts << model.index(row, column).data().toString();
        return texts;
    };
    // Noon of 2000 January 1 is MJD 51544.5; a millisecond is 1.157e-8 days.
    QCOMPARE(rowTexts(0), QStringList({"a.pnt", "2000-01-01 12:00:00.001", "51544.50000001", "12.5",
                                       "1000", "12.4928", "2 4 5", "1 to 8", "2",
                                       "109.039 to 111.5", "5.00 MiB", "whole"}));
    QCOMPARE(rowTexts(1).join(""), QString("b.pntcannot be read"));
    QCOMPARE(model.index(1, RecordingModel::Points).data(Qt::ToolTipRole).toString(),
             QString("/data/b.pnt is a pipe."));

    // By value, not by text.
    QSortFilterProxyModel sorted;
    sorted.setSourceModel(&model);
    sorted.setSortRole(RecordingModel::sortRole);
    for (const int column : {RecordingModel::Points, RecordingModel::Mjd}) {
        sorted.sort(column);
        QVERIFY(sorted.mapFromSource(model.index(2, 0)).row() <
                sorted.mapFromSource(model.index(0, 0)).row());
    }
}

ZRT_GUI_TEST_MAIN(TestRecordingModel)
#include "tst_recordingmodel.moc"
