#pragma once

#include <optional>
#include <vector>

/// Which part of a plot is shown, as plain arithmetic. Indices and values alike are ranges; where
/// a range runs backwards (min above max) its results run backwards too.
namespace Plot {

struct Range {
    double min = 0;
    double max = 0;

    double extent() const { return max - min; }
};

inline bool operator==(const Range &a, const Range &b)
{
    return a.min == b.min && a.max == b.max;
}

/// Where indices of the data before stand in the data that replace them.
struct IndexMap {
    double shift = 0;
    double factor = 1;

    double operator()(double index) const { return shift + factor * index; }
    Range operator()(const Range &range) const { return {(*this)(range.min), (*this)(range.max)}; }
};

/// The part that is shown. A direction without a range shows all there is.
struct Zoom {
    std::optional<Range> x; ///< point indices at the left and the right edge of the plot
    std::optional<Range> y; ///< values at its lower and its upper edge

    bool isNone() const { return !x && !y; }
};

inline bool operator==(const Zoom &a, const Zoom &b)
{
    return a.x == b.x && a.y == b.y;
}

/// The wanted range, made as long as `smallest` at least and as `all` at most around its middle,
/// and moved into `all`. A range whose ends are no numbers becomes `all`.
Range within(const Range &wanted, const Range &all, double smallest);

/// The shown range made `factor` times as long, with `anchor` where it was on the screen.
Range zoomedAt(const Range &shown, const Range &all, double anchor, double factor, double smallest);

/// The shown range moved by a distance, which ends at the edges of `all`.
Range panned(const Range &shown, const Range &all, double distance);

/// Whether a range holds another; rounding errors are allowed for.
bool covers(const Range &range, const Range &other);

/// Whether two views are the same; rounding errors are allowed for.
bool areAlike(const Zoom &a, const Zoom &b);

/// The shortest range of values that can be shown: what a float and a label can still tell apart.
double smallestExtent(const Range &values);

/// What was shown before. Steps of one gesture count as one.
class ZoomHistory {
public:
    /// Call before each change.
    ///
    /// @param gesture  number above 0 of what the user is doing; the same one as last time does
    ///                 not make a new entry until endGesture()
    void note(const Zoom &shown, int gesture);
    void endGesture() { lastGesture = 0; }
    /// Lets the views stand for the same in other data.
    ///
    /// @param all  indices of the data before
    void move(const IndexMap &map, const Range &all);

    bool isEmpty() const { return views.empty(); }
    /// The view before the last gesture, which leaves the history; none where it is empty.
    std::optional<Zoom> back();
    void clear();

private:
    std::vector<Zoom> views;
    int lastGesture = 0;
};

} // namespace Plot
