#include "forms/sky/candidateview.h"

#include "base/timetext.h"
#include "forms/days/growthview.h"
#include "forms/savefolder.h"
#include "forms/sky/mapview.h"
#include "forms/sky/smallplot.h"
#include "picture/plotgeometry.h"
#include "plot/picturemenu.h"

#include <cmath>

namespace {

constexpr int detailsDelay = 200; // ms

// Bins of phase, those of the days beside each other.
SmallPlot::Content profileContent(const std::vector<DayProfile> &profiles)
{
    SmallPlot::Content content;
    content.title = "Profiles of the best days, sigma";
    content.xName = "phase";
    content.isSteps = true;
    std::size_t bins = 0;
    for (const DayProfile &profile : profiles) {
        bins = std::max(bins, profile.bins.size());
        content.curves.push_back({QString("%1: S/N %2")
                                      .arg(textOfTime(profile.begin, "dd.MM.yy"))
                                      .arg(profile.snr, 0, 'f', 1),
                                  profile.bins});
    }
    for (std::size_t bin = 0; bin < bins; ++bin)
        content.x.push_back(double(bin) / double(bins));
    return content;
}

} // namespace

CandidateView::CandidateView(QWidget *parent)
    : QSplitter(Qt::Vertical, parent), map(new MapView),
      overDispersion(new SmallPlot("Sigma over dispersion: choose a candidate")),
      overDays(new GrowthView),
      profile(new SmallPlot("Profiles of the best days: choose a candidate"))
{
    setChildrenCollapsible(false);
    map->setObjectName("map");
    overDispersion->setObjectName("overDispersion");
    overDays->setObjectName("overDays");
    profile->setObjectName("profile");
    for (QWidget *const picture :
         std::initializer_list<QWidget *>{map, overDispersion, overDays, profile}) {
        addWidget(picture);
        shareSaveFolder(new PictureMenu(picture));
    }
    setSizes({170, 130, 130, 150});
    delay.setSingleShot(true);
    delay.setInterval(detailsDelay);
    connect(&delay, &QTimer::timeout, this, &CandidateView::read);
    connect(&reader, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            profile->showMessage(ending.problem);
    });
}

void CandidateView::showMessage(const QString &message)
{
    delay.stop();
    reader.stop();
    request = {}; // other stacks may need the memory
    map->setPicture({});
    overDispersion->showMessage(message);
    overDays->setGrowth({});
    profile->showMessage(message);
}

void CandidateView::showCandidate(const DetailsRequest &wanted, const PlotAxis &axis)
{
    showMessage("Reading the days...");
    request = wanted;
    columns = axis;
    delay.start();
}

void CandidateView::read()
{
    reader.start<CandidateDetails>(
        [asked = request](const Jobs::Control &control,
                          const Jobs::Deliver<CandidateDetails> &deliver) {
            findDetails(asked, control, deliver);
        },
        [this](const CandidateDetails &details) { take(details); });
}

void CandidateView::take(const CandidateDetails &details)
{
    if (details.hasDays) {
        overDays->setGrowth(details.growth);
        if (details.profiles.empty())
            profile->showMessage("No profile: no day could be folded");
        else
            profile->setContent(profileContent(details.profiles));
        return;
    }
    const Sky::SkyCandidate &candidate = request.candidate;
    const double axis = axisOf(*request.plan, candidate);
    map->setPicture(Plot::mapPicture(*request.plan, {details.map}));
    map->setColumns(rangeAround(columns, axis));
    map->setCell({0, candidate.start, Plot::axisIndex(columns, axis)});
    SmallPlot::Content content;
    content.title = "Sigma over dispersion, one trial";
    content.xName = "pc/cm^3";
    content.x = request.plan->dispersions;
    content.curves = {{{}, details.overDispersion}};
    content.mark = candidate.dispersion.value;
    content.hasMark = std::isfinite(candidate.dispersion.value);
    overDispersion->setContent(std::move(content));
}
