#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>

class TestBinToText : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void conversions();
    void escapeLeavesNothing();

private:
    QByteArray contents(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "none";
    }
    QStringList inFolder() const { return QDir(folder->path()).entryList(QDir::Files); }
    QString convert(const QString &target) const;
};

// Runs the command, choosing files in its dialogs. Gives what the box says.
QString TestBinToText::convert(const QString &target) const
{
    const TestSupport::MessageBoxCatcher catcher;
    QTimer dialogs;
    connect(&dialogs, &QTimer::timeout, [&] {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        auto *const name = dialog->findChild<QLineEdit *>("fileNameEdit");
        dialog->setOption(QFileDialog::DontConfirmOverwrite);
        name->setText(dialog->acceptMode() == QFileDialog::AcceptSave ? target
                                                                      : folder->filePath("in"));
        QTest::keyClick(name, Qt::Key_Return);
    });
    dialogs.start(10);
    window->readBinToText();
    return catcher.lastText();
}

void TestBinToText::conversions()
{
    const QString in = folder->filePath("in");
    const QString out = folder->filePath("out");
    const auto sample = [](int point, int, int channel, int) {
        return float(point) + 0.25f * float(channel);
    };
    const QByteArray recording = TestSupport::recordingBytes({3, 1, 3, 1}, sample);
    const QByteArray header = "points: 3\ntype: float\nfirst_point: 0\ndisp: 26\ndays: 1\n";
    const QByteArray result = header + QByteArray::fromHex("0000803f000020c00000803f");
    const QByteArray two = "i=0\nmodule 1 ray 1: 0 0.25 0.5\ni=1\nmodule 1 ray 1: 1 1.25 1.5\n";
    const struct {
        QByteArray bytes;
        QString target;
        QByteArray text; // of the file "out" afterwards
        QString box;     // "%1" stands for the path
    } files[] = {
        {result, "/proc/out", "none", "ERROR!\nНе могу открыть файл для записи"},
        {recording, "/proc/out", "none", "/proc/out cannot be made: "},
        {recording, out, two + "i=2\nmodule 1 ray 1: 2 2.25 2.5\n", ""},
        {recording.chopped(1), out, two, "File size is incorrect, data is broken"},
        {recording, in, two, "The text would take the place of the file"},
        {result, out, header + "1\n-2.5\n1\n", ""},
        {result.chopped(1), out, header + "1\n-2.5\n1\n", "Block 1 of 1 in %1 is short"},
        {"hello\nworld\n", out, header + "1\n-2.5\n1\n", "%1 is neither a recording"},
    };
    QTest::ignoreMessage(QtDebugMsg, "can't open file /proc/out for writing");
    for (const auto &[bytes, target, text, box] : files) {
        file(bytes, "in");
        const QString shown = convert(target);
        QVERIFY2(shown.contains(QString(box).replace("%1", in)), qPrintable(shown));
        QCOMPARE(shown.isEmpty(), box.isEmpty());
        QCOMPARE(contents(out), text);
        QCOMPARE(contents(in), bytes);
    }
    QVERIFY(QFile::remove(out));
    // Two bytes of text for a zero; the file takes no room on the disk.
    file("points: 600000000\ndays: 1\n", "in");
    QVERIFY(QFile::resize(in, 2500000000));
    QVERIFY(convert(out).startsWith("The text will take about 1.2 GB."));
    QCOMPARE(inFolder(), QStringList{"in"});
}

void TestBinToText::escapeLeavesNothing()
{
    file(TestSupport::recordingBytes({50000, 1, 33, 8}, [](int, int, int, int) { return 0.0f; }),
         "in");
    const auto *const bar = window->findChild<QProgressBar *>();
    QTimer escape;
    // After the reading the bar begins again with the text.
    int last = 0;
    bool isWriting = false;
    connect(bar, &QProgressBar::valueChanged, &escape, [&](int percent) {
        isWriting = isWriting || percent < last;
        last = percent;
    });
    int seen = -1; // percent of the text, when Esc was pressed
    connect(&escape, &QTimer::timeout, [&] {
        if (!isWriting || bar->isHidden() || bar->value() < 1)
            return;
        seen = bar->value();
        QTest::keyClick(window.get(), Qt::Key_Escape);
    });
    escape.start(5);
    QCOMPARE(convert(folder->filePath("out")), QString());
    QVERIFY2(seen > 0 && seen < 100, qPrintable(QString("Esc was pressed at %1 %").arg(seen)));
    QCOMPARE(inFolder(), QStringList{"in"});
}

ZRT_GUI_TEST_MAIN(TestBinToText)
#include "tst_bintotext.moc"
