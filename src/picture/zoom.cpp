#include "picture/zoom.h"

#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr size_t mostViews = 200;     // more than anybody goes back
constexpr double roundingPart = 1e-6; // of an extent

Range reversed(const Range &range)
{
    return {range.max, range.min};
}

} // namespace

Range within(const Range &wanted, const Range &all, double smallest)
{
    if (all.min > all.max)
        return reversed(within(reversed(wanted), reversed(all), smallest));
    if (!std::isfinite(wanted.min) || !std::isfinite(wanted.max))
        return all;
    const double low = std::min(wanted.min, wanted.max);
    const double high = std::max(wanted.min, wanted.max);
    const double extent = std::max(high - low, smallest);
    if (!(extent < all.extent()))
        return all;
    const double middle = low + (high - low) / 2;
    const double wantedStart = high - low < smallest ? middle - extent / 2 : low;
    const double start = std::clamp(wantedStart, all.min, all.max - extent);
    return {start, start + extent};
}

Range zoomedAt(const Range &shown, const Range &all, double anchor, double factor, double smallest)
{
    if (!(factor > 0) || shown.extent() == 0)
        return shown;
    const double shortest = std::min(smallest, std::abs(all.extent()));
    const double extent =
        std::copysign(std::max(std::abs(shown.extent()) * factor, shortest), shown.extent());
    const double part = (anchor - shown.min) / shown.extent();
    const double start = anchor - part * extent;
    return within({start, start + extent}, all, smallest);
}

Range panned(const Range &shown, const Range &all, double distance)
{
    const double low = std::min(all.min, all.max);
    const double high = std::max(all.min, all.max);
    const double toLow = low - std::min(shown.min, shown.max);
    const double toHigh = high - std::max(shown.min, shown.max);
    if (!(toLow <= toHigh) || std::isnan(distance))
        return shown;
    const double way = std::clamp(distance, toLow, toHigh);
    return {shown.min + way, shown.max + way};
}

bool covers(const Range &range, const Range &other)
{
    const double slack = roundingPart * std::abs(other.extent());
    return other.min >= range.min - slack && other.max <= range.max + slack;
}

bool areAlike(const Zoom &a, const Zoom &b)
{
    return a.y == b.y && a.x.has_value() == b.x.has_value() &&
           (!a.x || (covers(*a.x, *b.x) && covers(*b.x, *a.x)));
}

double smallestExtent(const Range &values)
{
    constexpr double ofExtent = 1e-6;
    constexpr double ofMagnitude = 1e-6; // a float has 24 bits
    return std::max(std::abs(values.extent()) * ofExtent,
                    std::max(std::abs(values.min), std::abs(values.max)) * ofMagnitude);
}

void ZoomHistory::note(const Zoom &shown, int gesture)
{
    if (gesture == lastGesture && gesture > 0)
        return;
    lastGesture = gesture;
    if (views.size() == mostViews)
        views.erase(views.begin());
    views.push_back(shown);
}

void ZoomHistory::move(const IndexMap &map, const Range &all)
{
    for (Zoom &shown : views)
        shown.x = map(shown.x.value_or(all));
}

std::optional<Zoom> ZoomHistory::back()
{
    endGesture();
    if (views.empty())
        return std::nullopt;
    const Zoom last = views.back();
    views.pop_back();
    return last;
}

void ZoomHistory::clear()
{
    views.clear();
    endGesture();
}

} // namespace Plot
