#include "app/shell/settings.h"
#include "forms/ffa/ffaform.h"
#include "forms/pulsar/pulsarform.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QSpinBox>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Bytes from which on there is no memory; 0: there is any.
std::atomic<std::size_t> tooMuch = 0;

} // namespace

void *operator new(std::size_t size)
{
    void *const memory = tooMuch > 0 && size >= tooMuch ? nullptr : std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return tooMuch > 0 && size >= tooMuch ? nullptr : std::malloc(size);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

using TestSupport::MessageBoxCatcher;

class TestLittleMemory : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup()
    {
        tooMuch = 0;
        FormTest::cleanup();
    }
    void workEndsInABox_data();
    void workEndsInABox();

private:
    QByteArray noise;
};

void TestLittleMemory::initTestCase()
{
    noise = TestSupport::recordingBytes({40000, 1, 33, 1}, [](int point, int, int channel, int) {
        return float((quint32(point * 33 + channel) * 2654435761u) >> 22);
    });
}

void TestLittleMemory::workEndsInABox_data()
{
    QTest::addColumn<bool>("isSearch");
    QTest::newRow("an action, on the thread of the window") << false;
    QTest::newRow("a search, on one of its own") << true;
}

void TestLittleMemory::workEndsInABox()
{
    QFETCH(bool, isSearch);
    const char *const start = isSearch ? "pushButton" : "sumChannelsAndFourier";
    const MessageBoxCatcher catcher;
    if (isSearch) {
        new FfaForm(file(noise), window.get());
    } else {
        new PulsarForm(file(noise), window.get());
        find<QLineEdit>("firstPoint")->setText("0");
    }
    find<QSpinBox>("ray")->setValue(1);
    const QProgressBar *const bar = Settings::instance()->progressBar();
    tooMuch = 100000; // less than 16384 sums take
    click(start);
    QTRY_VERIFY(bar->isHidden());
    tooMuch = 0;
    QTRY_COMPARE(catcher.boxes().size(), 1);
    QVERIFY2(catcher.lastText().startsWith("There is not enough memory"),
             qPrintable(catcher.lastText()));
    QVERIFY(find<QWidget>("menubar")->isEnabled());
    click(start);
    QTRY_VERIFY(bar->isHidden());
    QCOMPARE(catcher.boxes().size(), 1);
    QVERIFY(!shown().graphs.empty());
}

ZRT_GUI_TEST_MAIN(TestLittleMemory)
#include "tst_littlememory.moc"
