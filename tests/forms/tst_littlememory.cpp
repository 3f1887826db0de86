#include "app/mainwindow.h"
#include "app/shell/settings.h"
#include "forms/ffa/ffaform.h"
#include "forms/pulsar/pulsarform.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableWidget>
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

class TestLittleMemory : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void actionEndsInABox();
    void searchEndsInABox();

private:
    template <typename Widget>
    Widget *find(const QString &name) const
    {
        return window->findChild<Widget *>(name);
    }

    QTemporaryDir folder;
    QString path;
    std::unique_ptr<MainWindow> window;
};

void TestLittleMemory::initTestCase()
{
    const auto noise = [](int point, int, int channel, int) {
        return float((quint32(point * 33 + channel) * 2654435761u) >> 22);
    };
    path = TestSupport::writeFile(folder, "x.pnt",
                                  TestSupport::recordingBytes({40000, 1, 33, 1}, noise));
}

void TestLittleMemory::init()
{
    window = std::make_unique<MainWindow>();
    window->show();
}

void TestLittleMemory::cleanup()
{
    tooMuch = 0;
    window.reset();
}

void TestLittleMemory::actionEndsInABox()
{
    const MessageBoxCatcher catcher;
    const QPointer<PulsarForm> form = new PulsarForm(path, window.get());
    find<QSpinBox>("ray")->setValue(1);
    find<QLineEdit>("firstPoint")->setText("0");
    tooMuch = 100000; // less than 16384 sums take
    find<QRadioButton>("sumChannelsAndFourier")->click();
    tooMuch = 0;
    QCOMPARE(catcher.boxes().size(), 1);
    QVERIFY2(catcher.boxes()[0].text.startsWith("There is not enough memory"),
             qPrintable(catcher.boxes()[0].text));
    QVERIFY(form && form->isEnabled());
    QVERIFY(Settings::instance()->progressBar()->isHidden());
    QVERIFY(find<QWidget>("menubar")->isEnabled());
    find<QRadioButton>("sumChannelsAndFourier")->click();
    QCOMPARE(catcher.boxes().size(), 1);
}

void TestLittleMemory::searchEndsInABox()
{
    const MessageBoxCatcher catcher;
    new FfaForm(path, window.get());
    const QProgressBar *const bar = Settings::instance()->progressBar();
    tooMuch = 100000;
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY(bar->isHidden());
    tooMuch = 0;
    QTRY_COMPARE(catcher.boxes().size(), 1);
    QVERIFY2(catcher.boxes()[0].text.startsWith("There is not enough memory"),
             qPrintable(catcher.boxes()[0].text));
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY(bar->isHidden());
    QVERIFY(find<QTableWidget>("candidates")->isVisible());
    QCOMPARE(catcher.boxes().size(), 1);
}

ZRT_GUI_TEST_MAIN(TestLittleMemory)
#include "tst_littlememory.moc"
