#include "app/mainwindow.h"
#include "demo/pictures.h"
#include "forms/days/daysmodel.h"
#include "forms/days/fourierform.h"
#include "plot/pulsargrafik.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <algorithm>
#include <functional>
#include <utility>

namespace {

// False when it does not come.
bool waitFor(const std::function<bool()> &isThere, const BoxWatcher &boxes)
{
    constexpr int longest = 300000; // ms
    QElapsedTimer clock;
    clock.start();
    while (!isThere()) {
        if (boxes.hasSeenBox() || clock.elapsed() > longest)
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    return true;
}

} // namespace

bool pictureDays(MainWindow &window, const QString &days, const QDir &folder,
                 const BoxWatcher &boxes)
{
    auto *const form = new FourierForm(days, 0, 0, 0, &window);
    const auto *const list = form->findChild<DaysModel *>();
    if (!waitFor([&] { return list->rowCount() > 0; }, boxes))
        return false;
    for (const auto &[field, text] :
         {std::pair("alfa", "05:30:00"), std::pair("delta", "+28:36:00"),
          std::pair("dispersion", "26.8")}) {
        auto *const edit = form->findChild<QLineEdit *>(field);
        edit->setText(text);
        emit edit->textEdited(text);
    }
    form->compute();
    // The stack comes last, with every day that can be used.
    const auto *const used = window.findChild<QLabel *>("used");
    const auto isStacked = [&] {
        const std::vector<DayRow> &rows = list->dayRows();
        const auto usable = std::count_if(rows.begin(), rows.end(), [](const DayRow &row) {
            return row.begin.isValid() && row.canCount;
        });
        return used->text().contains(QString(" of %1 days").arg(usable));
    };
    if (!waitFor(isStacked, boxes))
        return false;
    auto *const lines = window.findChild<QTableView *>("lines");
    lines->setCurrentIndex(lines->model()->index(0, 0));
    auto *const grafik = window.findChild<PulsarGrafik *>("grafik");
    constexpr double shownShare = 0.4; // the harmonics that stand out
    grafik->setVisibleX(0, shownShare * grafik->data().numPoints);
    return savePicture(window, folder.filePath("days-stack.png"));
}
