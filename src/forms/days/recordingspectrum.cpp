#include "forms/days/recordingspectrum.h"

#include "base/systemmemory.h"
#include "forms/days/fouriergrafikinfo.h"
#include "forms/days/fourierjobs.h"
#include "forms/days/spectrumview.h"
#include "forms/days/stacktexts.h"

#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>

namespace {

constexpr double bytesPerMegabyte = 1e6;

struct Outcome {
    QString problem;
    std::shared_ptr<const DaySpectra> spectra;
    std::shared_ptr<const StackOutcome> stacked;
};

// One day that is the whole recording.
Days::DayPlan planOf(const RecordingEntry &entry, const Days::FourierDaysParameters &parameters,
                     int behind)
{
    Days::DayPlan plan;
    plan.choice.module = parameters.module;
    plan.choice.ray = parameters.ray;
    plan.choice.points = parameters.points;
    plan.choice.pointsAfter = behind;
    plan.beam = Days::beamOf(Days::siteOf(entry.path), parameters.module, parameters.ray);
    plan.series = {{parameters.module, parameters.ray, parameters.dispersion}};
    plan.list.tresolution = entry.header.tresolution;
    plan.list.fbands = entry.header.fbands;
    plan.header = entry.header;
    Days::Day day;
    day.begin = entry.begin;
    day.parts = {{0, 0, parameters.points + behind}};
    plan.list.days = {day};
    return plan;
}

QString memoryProblem(const Days::FourierDaysParameters &parameters, const ObservationData &header)
{
    const auto bytes = double(Days::analysisOf(parameters).bytes(parameters, header, 1));
    if (hasMemoryFor(bytes))
        return {};
    return QString("%1 points take %2 MB, more memory than there is. Choose fewer points.")
        .arg(parameters.points)
        .arg(bytes / bytesPerMegabyte, 0, 'f', 0);
}

Outcome spectrumOf(const RecordingSpectrum::Request &request, const Jobs::Control &control)
{
    const RecordingSet set = recordingsOfFiles({request.path});
    if (set.entries.empty() || set.entries[0].completePoints < 1)
        return {request.path + ": it cannot be read any more.", nullptr, nullptr};
    const RecordingEntry &entry = set.entries[0];
    Days::FourierDaysParameters parameters;
    parameters.module = request.module;
    parameters.ray = request.ray;
    parameters.dispersion = request.dispersion;
    const int behind = Days::pointsBehind(entry.header, request.dispersion);
    if (behind < 0)
        return {
            "The bands cannot be delayed: there are fewer than 32 of them, or the dispersion is "
            "too high.",
            nullptr, nullptr};
    parameters.points = request.points > 0 ? request.points : RecordingSpectrum::mostPoints;
    while (parameters.points > entry.completePoints - behind)
        parameters.points /= 2;
    if (parameters.points < Days::fewestPoints)
        return {
            QString("The recording has %1 points; at least %2 are needed, and %3 for the delays "
                    "of the bands.")
                .arg(entry.completePoints)
                .arg(Days::fewestPoints)
                .arg(behind),
            nullptr, nullptr};
    if (const QString problem = memoryProblem(parameters, entry.header); !problem.isEmpty())
        return {problem, nullptr, nullptr};

    const auto spectra = std::make_shared<DaySpectra>();
    spectra->parameters = parameters;
    spectra->plan = planOf(entry, parameters, behind);
    spectra->rays = {
        {Days::readDay(set, spectra->plan, spectra->plan.list.days[0], parameters, {}, control)}};
    if (!spectra->days()[0].problem.isEmpty())
        return {spectra->days()[0].problem, nullptr, nullptr};
    StackRequest stack;
    stack.spectra = spectra;
    stack.parameters = parameters;
    stack.decided = {true};
    return {{}, spectra, control.isStopped() ? nullptr : stackSpectra(stack, control)};
}

} // namespace

RecordingSpectrum::RecordingSpectrum(const Request &wanted, QWidget *parent)
    : QWidget(parent, Qt::Window), request(wanted), points(new QComboBox(this)),
      problem(new QLabel(this)), view(new SpectrumView(stackTexts(false), this)),
      progress(worker, this)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName("recordingSpectrum");
    setWindowTitle(QString("Spectrum of %1, module %2, ray %3, %4 pc/cm^3")
                       .arg(QFileInfo(request.path).fileName())
                       .arg(request.module)
                       .arg(request.ray)
                       .arg(request.dispersion));
    points->setObjectName("spectrumPoints");
    points->addItem("As many as there are", 0);
    for (int count = mostPoints; count >= Days::fewestPoints; count /= 2)
        points->addItem(QString::number(count), count);
    problem->setObjectName("spectrumProblem");
    problem->setTextFormat(Qt::PlainText);
    problem->setWordWrap(true);
    auto *const label = new QLabel("Points", this);
    label->setBuddy(points);
    auto *const row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(points);
    row->addWidget(problem, 1);
    auto *const layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(view, 1);
    view->showOnlyLines();
    resize(1100, 640);
    connect(points, qOverload<int>(&QComboBox::activated), this, &RecordingSpectrum::compute);
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            problem->setText(ending.problem);
        else if (ending.kind == Jobs::Ending::Stopped)
            problem->setText("Stopped. Choose the points to compute again.");
    });
    show();
    compute();
}

RecordingSpectrum::~RecordingSpectrum() = default;

void RecordingSpectrum::compute()
{
    request.points = points->currentData().toInt();
    problem->clear();
    view->showMessage("Computing...");
    worker.start<Outcome>(
        [wanted = request](const Jobs::Control &control, const Jobs::Deliver<Outcome> &deliver) {
            deliver(spectrumOf(wanted, control));
        },
        [this](const Outcome &outcome) {
            problem->setText(outcome.problem);
            if (!outcome.stacked) {
                view->showMessage("No spectrum");
                return;
            }
            const Days::FourierStack &stack = outcome.stacked->stack;
            const QString used = QString("%1\n%2 points from the first on, step %3 s\nBin %4 Hz")
                                     .arg(request.path)
                                     .arg(outcome.spectra->parameters.points)
                                     .arg(outcome.spectra->plan.list.tresolution)
                                     .arg(stack.binWidth);
            view->showStack(SpectrumView::DayList(outcome.spectra, &outcome.spectra->days()),
                            outcome.stacked->choice.days, stack, used.split('\n'));
            view->panel()->setUsed(used);
        });
}
