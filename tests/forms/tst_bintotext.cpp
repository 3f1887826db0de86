#include "app/mainwindow.h"
#include "app/settings.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>

using TestSupport::MessageBoxCatcher;

namespace {

const QByteArray header = "points: 3\ntype: float\nfirst_point: 0\ndisp: 26\ndays: 1\n";

float sample(int point, int, int channel, int)
{
    return float(point) + 0.25f * float(channel);
}

} // namespace

class TestBinToText : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void conversions_data();
    void conversions();
    void escapeLeavesNothing();
    void largeTextIsAskedFor();

private:
    QString path(const QString &name) const { return QDir(folder->path()).filePath(name); }
    QByteArray contents(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "none";
    }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(name));
    }
    /// Runs the command, choosing these files in its dialogs.
    void convert(const QString &in, const QString &out);

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<MainWindow> window;
};

void TestBinToText::init()
{
    folder = std::make_unique<QTemporaryDir>();
    window = std::make_unique<MainWindow>();
    window->show();
}

void TestBinToText::cleanup()
{
    window.reset();
}

void TestBinToText::convert(const QString &in, const QString &out)
{
    QTimer dialogs;
    connect(&dialogs, &QTimer::timeout, [&] {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        const bool isSaving = dialog->acceptMode() == QFileDialog::AcceptSave;
        dialog->setOption(QFileDialog::DontConfirmOverwrite);
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path(isSaving ? out : in));
        QTest::keyClick(dialog->findChild<QLineEdit *>("fileNameEdit"), Qt::Key_Return);
    });
    dialogs.start(10);
    window->readBinToText();
}

void TestBinToText::conversions_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("box");
    const QByteArray recording = TestSupport::recordingBytes({3, 1, 3, 1}, sample);
    const QByteArray values = QByteArray::fromHex("0000803f000020c00000803f");
    const QByteArray first = "i=0\nmodule 1 ray 1: 0 0.25 0.5\ni=1\nmodule 1 ray 1: 1 1.25 1.5\n";
    const QByteArray old = "the old text";
    QTest::newRow("recording") << recording << "out" << first + "i=2\nmodule 1 ray 1: 2 2.25 2.5\n"
                               << "";
    QTest::newRow("result file") << header + values << "out" << header + "1\n-2.5\n1\n"
                                 << "";
    QTest::newRow("recording ends early")
        << recording.chopped(1) << "out" << first << "File size is incorrect, data is broken";
    QTest::newRow("no whole point")
        << recording.chopped(25) << "out" << old << "File size is incorrect, data is broken";
    QTest::newRow("short block") << header + values.chopped(1) << "out" << old
                                 << "Error! Block 1 of 1 in %1 is short: it needs 12 bytes";
    QTest::newRow("neither") << QByteArray("hello\nworld\n") << "out" << old
                             << "%1 is neither a recording";
    QTest::newRow("empty") << QByteArray() << "out" << old << "%1 is neither a recording";
    QTest::newRow("recording onto itself")
        << recording << "in" << old << "The text would take the place of the file";
    QTest::newRow("unwritable") << header + values << "/proc/out" << old
                                << "ERROR!\nНе могу открыть файл для записи";
    QTest::newRow("unwritable for a recording")
        << recording << "/proc/out" << old << "Error! Cannot write ";
}

void TestBinToText::conversions()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, out);
    QFETCH(QString, box);
    write("in", bytes);
    write("out", "the old text");
    const MessageBoxCatcher catcher;
    convert("in", out);
    QTEST(contents("out"), "text");
    QCOMPARE(contents("in"), bytes);
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), (QStringList{"in", "out"}));
    const QString shown = catcher.boxes().isEmpty() ? QString() : catcher.boxes()[0].text;
    QCOMPARE(shown.left(box.size() - box.count("%1") * 2 + box.count("%1") * path("in").size()),
             QString(box).replace("%1", path("in")));
    QCOMPARE(shown.isEmpty(), box.isEmpty());
}

void TestBinToText::escapeLeavesNothing()
{
    const QByteArray passport = TestSupport::passportBytes(
        {"npoints 400000", "nbands 32", "modulus 1", "rays 1", "tresolution 1"});
    write("in", passport + QByteArray(400000 * 33 * int(sizeof(float)), '\0'));
    const QProgressBar *const bar = Settings::instance()->progressBar();
    int seen = -1; // percent of the text, when Esc was pressed
    QTimer escape;
    connect(&escape, &QTimer::timeout, [&] {
        if (!bar->isVisible() || !bar->format().startsWith("Writing") || bar->value() < 1)
            return;
        seen = bar->value();
        QTest::keyClick(window.get(), Qt::Key_Escape);
    });
    escape.start(5);
    const MessageBoxCatcher catcher;
    convert("in", "out");
    QVERIFY2(seen > 0 && seen < 100, "Esc was pressed while the text was written");
    QCOMPARE(catcher.boxes().size(), 0);
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList{"in"});
    QVERIFY(Settings::instance()->ui().menubar->isEnabled() && !bar->isVisible());
}

// Two bytes of text for a zero; the file takes no room on the disk.
void TestBinToText::largeTextIsAskedFor()
{
    const int values = 600000000;
    const QByteArray large = "points: " + QByteArray::number(values) + "\ndays: 1\n";
    write("in", large);
    QVERIFY(QFile::resize(path("in"), large.size() + qint64(values) * 4));
    const MessageBoxCatcher catcher;
    convert("in", "out");
    QCOMPARE(catcher.boxes().size(), 1);
    QVERIFY(catcher.boxes()[0].text.startsWith("The text will take about 1.2 GB."));
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList{"in"});
}

ZRT_GUI_TEST_MAIN(TestBinToText)
#include "tst_bintotext.moc"
