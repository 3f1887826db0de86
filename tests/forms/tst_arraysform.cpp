#include "app/shell/settings.h"
#include "forms/arrays/arraysdirform.h"
#include "forms/arrays/arraysform.h"
#include "forms/arrays/greyview.h"
#include "picture/plotgeometry.h"
#include "results/arrayfile.h"
#include "results/resulttable.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMouseEvent>
#include <QProgressBar>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>
#include <cmath>

using TestSupport::MessageBoxCatcher;

class TestArraysForm : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void columns();
    void shownPart();
    void linesAndPicture();
    void tableWithWords();
    void ownResults();
    void refused();
    void directory();
    void directoryIsLeftWhileReading();

private:
    QStringList statisticsColumn(int column) const
    {
        QStringList texts;
        const QAbstractItemModel *const table = find<QTableView>("table")->model();
        for (int row = 0; column < table->columnCount() && row < table->rowCount(); ++row)
            texts << table->index(row, column).data().toString();
        return texts;
    }
};

void TestArraysForm::columns()
{
    new ArraysForm(file("t a b\n1 10 200000\n2 11 200001\n4 12 1e300\n"), window.get());
    QCOMPARE(shown().names, (QVector<QString>{"a", "b"}));
    QCOMPARE(shown().graphs[0], (std::vector<float>{10, 11, 12}));
    QVERIFY(std::isinf(shown().graphs[1][2]));
    QCOMPARE(shown().x.values, (std::vector<double>{1, 2, 4})); // not equally spaced
    QCOMPARE(shown().textX1(2), QString("4"));

    auto *const curves = find<QListWidget>("curves");
    curves->item(0)->setCheckState(Qt::Unchecked);
    QCOMPARE(shown().names, QVector<QString>{"b"});
    QCOMPARE(shown().colours, QVector<QString>{plotColour(1).code});
    curves->item(1)->setCheckState(Qt::Unchecked);
    QVERIFY(shown().messageMode);

    click("firstColumnIsX");
    QCOMPARE(shown().names, (QVector<QString>{"t", "a", "b"}));
    QVERIFY(shown().x.values.empty());
    click("firstColumnIsX");
    curves->item(1)->setCheckState(Qt::Unchecked);
    QCOMPARE(shown().yMin, 10.0); // fits what is drawn
    QCOMPARE(shown().yMax, 12.0);
}

void TestArraysForm::shownPart()
{
    QByteArray bytes;
    for (int i = 0; i < 100; ++i)
        bytes += QByteArray::number(i) + "\n";
    new ArraysForm(file(bytes), window.get());
    QTRY_COMPARE(statisticsColumn(0).value(0), QString("100"));

    find<QSpinBox>("firstPoint")->setValue(90);
    find<QSpinBox>("points")->setValue(20); // more than there are
    find<QSpinBox>("points")->setFocus();
    QTest::keyClick(find<QSpinBox>("points"), Qt::Key_Return);
    QCOMPARE(find<PulsarGrafik>("grafik")->visibleRange().first, 80.0); // moved into the data
    QTRY_COMPARE(statisticsColumn(0), (QStringList{"20", "89.5", "89.5", "5.9160798", "80", "99"}));
    const PlotData &histogram = find<PulsarGrafik>("histogram")->data();
    QCOMPARE(histogram.graphs[0][0], 1.0f);
    QCOMPARE(histogram.graphs[0][99], 1.0f);

    click("resetPointsButton");
    QTRY_COMPARE(statisticsColumn(0).value(0), QString("100"));

    // The blue rectangle over a quarter of the points.
    auto *const grafik = find<PulsarGrafik>("grafik");
    QCoreApplication::processEvents();
    grafik->grab(); // moves count once it has been painted
    const int width = grafik->width() - Plot::marginLeft - Plot::marginRight;
    const auto at = [&](double part) { return QPoint(Plot::marginLeft + int(width * part), 100); };
    QTest::mousePress(grafik, Qt::LeftButton, {}, at(0.505));
    QMouseEvent move(QEvent::MouseMove, at(0.755) + QPoint(0, 50), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(grafik, &move);
    QTest::mouseRelease(grafik, Qt::LeftButton, {}, at(0.755) + QPoint(0, 50));
    QTRY_COMPARE(statisticsColumn(0).mid(0, 2).join(" "), QString("25 63")); // 51 to 75
    QTest::mouseClick(grafik, Qt::LeftButton, {}, at(0.1));
    QTRY_COMPARE(statisticsColumn(0).value(0), QString("100"));
}

void TestArraysForm::linesAndPicture()
{
    QByteArray bytes;
    for (int row = 0; row < 20; ++row)
        bytes += QByteArray::number(row) + QByteArray(" 0").repeated(19) + "\n";
    new ArraysForm(file(bytes), window.get());
    QVERIFY2(find<QAbstractButton>("showRows")->isChecked(), "long lines are curves");
    QCOMPARE(shown().graphs.size(), std::size_t(10)); // not all at once
    QCOMPARE(shown().graphs[9][0], 9.0f);
    click("allButton");
    QCOMPARE(shown().graphs.size(), std::size_t(20));

    click("showPicture");
    auto *const picture = find<GreyView>("picture");
    QTRY_VERIFY(picture->isVisible());
    // The read-out and the grey belong to the same number: the first of each line is its index.
    QCoreApplication::processEvents();
    const QImage image = picture->grab().toImage();
    const auto coords = [this] { return find<QLabel>("coords")->text(); };
    QPoint pointer = image.rect().center();
    while (!coords().contains("Index: 0\n") && pointer.x() > 0) {
        pointer -= QPoint(4, 0);
        QMouseEvent move(QEvent::MouseMove, pointer, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(picture, &move);
    }
    const int line = coords().section(' ', 1, 1).toInt();
    QVERIFY2(line == 9 || line == 10, qPrintable(coords()));
    QCOMPARE(qGray(image.pixel(pointer)), int(std::lround(line * 255.0 / 19)));
    QTRY_COMPARE(statisticsColumn(0).value(0), QString("400"));
}

// All cells stand in the table; words are no curve.
void TestArraysForm::tableWithWords()
{
    new ArraysForm(file("# file: a.pnt\nno.\tperiod, s\tremark\n"
                        "1\t0.7145700\t\n2\t1.4291400\t2 x no. 1\n"),
                   window.get());
    QVERIFY(find<QAbstractButton>("showTable")->isChecked());
    auto *const view = find<QTableView>("cells");
    QTRY_VERIFY(view->isVisible());
    const QAbstractItemModel &model = *view->model();
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), QString("period, s"));
    QCOMPARE(model.index(1, 2).data().toString(), QString("2 x no. 1"));
    QTRY_COMPARE(statisticsColumn(1).value(0), QString("2"));
    QVERIFY(report().contains("file: a.pnt"));

    view->selectRow(1);
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(),
             QString("no.\tperiod, s\tremark\n2\t1.42914\t2 x no. 1\n"));

    click("showColumns");
    QCOMPARE(shown().names, QVector<QString>{"period, s"}); // over no., and not the remarks
    QVERIFY(!find<QAbstractButton>("showRows")->isEnabled());
}

// The same spectrum in each form that the batch program writes, and as saved from a plot.
void TestArraysForm::ownResults()
{
    Results::ResultTable table;
    table.request = {{"program", "zrt-batch 1"},
                     {"x", "frequency [Hz]"},
                     {"x_first", "0.5"},
                     {"x_step", "0.25"}};
    table.columns = {{"spectrum", {}, std::vector<float>{1, 2, 4}}};
    QList<QByteArray> forms = {table.toBytes(Results::Format::Text),
                               table.toBytes(Results::Format::Json),
                               "# points 0 to 2 of 3\nindex,frequency [Hz],spectrum\n"
                               "0,0.5,1\n1,0.75,2\n2,1,4\n"};
    table.columns.insert(table.columns.begin(),
                         {"frequency", "Hz", std::vector<double>{0.5, 0.75, 1}});
    forms << table.toBytes(Results::Format::Csv);
    for (const QByteArray &bytes : forms) {
        new ArraysForm(file(bytes), window.get());
        QCOMPARE(shown().names, QVector<QString>{"spectrum"});
        QCOMPARE(shown().graphs[0], (std::vector<float>{1, 2, 4}));
        QCOMPARE(shown().x.name, QString("frequency [Hz]"));
        QCOMPARE(shown().textX1(2), QString("1"));
        QCOMPARE(shown().x.first, 0.5);
        QVERIFY2(!report().contains("skipped"), qPrintable(report()));
    }
}

void TestArraysForm::refused()
{
    const MessageBoxCatcher catcher;
    const auto reason = [this](const QByteArray &bytes) {
        return Results::readArrays(file(bytes, "x.json"), 1000).error;
    };
    QVERIFY(
        reason("{\"columns\": [\n{\"values\": [1,\n").contains("x.json is no table in JSON, line"));
    QVERIFY(reason("{\"a\": 1}\n").contains("it is no table"));
    const QPointer<ArraysForm> form = new ArraysForm(file(QByteArray(100, '\0')), window.get());
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(Settings::instance()->ui().centralwidget->layout(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!form);
    new ArraysDirForm(folder->filePath("missing"), window.get());
    QCOMPARE(catcher.boxes().size(), 2);
}

void TestArraysForm::directory()
{
    file("1 100\n2 200\n3 300\n", "a10.txt");
    file("5\n6\n", "a9.txt");
    file("words\n", "broken.txt");
    new ArraysDirForm(folder->path(), window.get());
    auto *const files = find<QListWidget>("files");
    QTRY_COMPARE(files->item(2)->text(), QString("broken.txt\nhas no line of numbers."));
    QCOMPARE(files->item(0)->text(), QString("a9.txt\n2 x 1"));
    files->selectAll();
    QTRY_COMPARE(shown().names, (QVector<QString>{"a10.txt", "a9.txt"}));
    QCOMPARE(shown().graphs[0], (std::vector<float>{100, 200, 300}));
    QCOMPARE(shown().yMin, 5.0); // one scale
    QCOMPARE(shown().yMax, 300.0);
    QVERIFY(report().contains("broken.txt has no line"));
    QVERIFY2(shown().textX1 == nullptr, "X of one file is none of the other");
    files->setCurrentRow(1, QItemSelectionModel::ClearAndSelect);
    QTRY_COMPARE(shown().x.name, QString("column 1"));
    files->selectAll();

    find<QSpinBox>("curve")->setValue(2);
    QTRY_VERIFY(report().contains("a9.txt has no curve 2"));
    QTest::keyClick(files, Qt::Key_Home);
    QTest::keyClick(files, Qt::Key_Return);
    QTRY_VERIFY(window->findChild<ArraysForm *>());
    QVERIFY(find<QLabel>("filePath")->text().endsWith("a9.txt"));
}

// A file takes long to read; what opens another form comes in between.
void TestArraysForm::directoryIsLeftWhileReading()
{
    file("1\n2\n", "a.txt");
    file(QByteArray("123\n").repeated(400000), "long.txt");
    const QPointer<ArraysDirForm> form = new ArraysDirForm(folder->path(), window.get());
    bool isLoopOnStack = false; // menus are disabled while one runs
    connect(form, &QObject::destroyed, this,
            [&] { isLoopOnStack = !find<QMenuBar>("menubar")->isEnabled(); });
    auto *const files = find<QListWidget>("files");
    auto *const bar = Settings::instance()->progressBar();
    QTimer opens; // once the reading is under way
    connect(&opens, &QTimer::timeout, this, [&] {
        if (!form || bar->isHidden())
            return;
        opens.stop();
        emit files->itemActivated(files->item(0));
    });
    opens.start(0);
    files->selectAll();
    QTRY_VERIFY(!form);
    QVERIFY(!isLoopOnStack);
    QVERIFY(window->findChild<ArraysForm *>());
    QVERIFY(bar->isHidden());
}

ZRT_GUI_TEST_MAIN(TestArraysForm)
#include "tst_arraysform.moc"
