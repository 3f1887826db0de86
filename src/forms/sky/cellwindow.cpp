#include "forms/sky/cellwindow.h"

#include "forms/days/fouriergrafikinfo.h"
#include "forms/days/spectrumview.h"
#include "forms/days/stacktexts.h"
#include "results/reporttext.h"

#include <QLabel>
#include <QVBoxLayout>

CellWindow::CellWindow(const Request &wanted, QWidget *parent)
    : QWidget(parent, Qt::Window), request(wanted), told(new QLabel(this)),
      view(new SpectrumView(stackTexts(wanted.plan->trials != nullptr), this)),
      progress(worker, this)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName("cellWindow");
    setWindowTitle("Days of " + placeText(*request.plan, request.place).replace('\n', ", "));
    told->setObjectName("cellProblem");
    told->setTextFormat(Qt::PlainText);
    told->setWordWrap(true);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(told);
    layout->addWidget(view, 1);
    told->hide();
    view->panel()->hideButtons();
    resize(1100, 640);
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Finished)
            return;
        told->setText(ending.kind == Jobs::Ending::Failed ? ending.problem : QString("Stopped."));
        told->show();
    });
    show();
    view->showMessage("Reading the days...");
    worker.start<CellDays>(
        [wanted](const Jobs::Control &control, const Jobs::Deliver<CellDays> &deliver) {
            deliver(readCellDays(*wanted.recordings, *wanted.plan, wanted.place,
                                 wanted.plan->interference, control));
        },
        [this](const CellDays &days) { take(days); });
}

CellWindow::~CellWindow() = default;

void CellWindow::take(const CellDays &days)
{
    if (!days.stacked) {
        view->showMessage("No day holds this stretch");
        return;
    }
    const Days::FourierStack &stack = days.stacked->stack;
    QStringList used = placeText(*request.plan, request.place).split('\n');
    used << QString("%1 of %2 count, as a rule proposes")
                .arg(stack.days)
                .arg(ReportText::counted(stack.allDays, "day"));
    used += stack.remarks;
    view->showStack(SpectrumView::DayList(days.spectra, &days.spectra->days()),
                    days.stacked->choice.days, stack, used);
    view->panel()->setUsed(used.join('\n'));
    for (const Days::FourierDay &day : days.spectra->days()) {
        if (day.problem.isEmpty())
            continue;
        told->setText(day.problem);
        told->show();
        break;
    }
}
