#include "calc/boxcargroups.h"

#include <algorithm>
#include <numeric>

namespace Tools {

namespace {

constexpr int trialsApart = 3;
constexpr int pointsApart = 2; // or half of the narrower width
// By how much the weaker of two groups stands out of what joins them, where they stay apart.
constexpr float leastProminence = 3;
constexpr float prominentShare = 0.2F;

class Joining {
public:
    explicit Joining(const std::vector<BoxcarEvent> &boxcars)
        : peaks(boxcars), root(boxcars.size()), isTaken(boxcars.size(), false)
    {
        std::iota(root.begin(), root.end(), 0);
        for (const BoxcarEvent &peak : peaks) {
            trials = std::max(trials, peak.trial + 1);
            widest = std::max(widest, peak.width);
        }
        ofTrial.resize(std::size_t(trials));
        for (std::size_t i = 0; i < peaks.size(); ++i)
            ofTrial[std::size_t(peaks[i].trial)].push_back(int(i));
        for (std::vector<int> &list : ofTrial)
            std::sort(list.begin(), list.end(), [&](int a, int b) {
                return std::pair(at(a).first, a) < std::pair(at(b).first, b);
            });
    }

    const BoxcarEvent &at(int i) const { return peaks[std::size_t(i)]; }

    bool isStronger(int a, int b) const
    {
        return at(a).snr != at(b).snr ? at(a).snr > at(b).snr : a < b;
    }

    // The strongest boxcar of a group stands for it.
    int rootOf(int i)
    {
        while (root[std::size_t(i)] != i) {
            root[std::size_t(i)] = root[std::size_t(root[std::size_t(i)])];
            i = root[std::size_t(i)];
        }
        return i;
    }

    void take(int i)
    {
        const BoxcarEvent &own = at(i);
        isTaken[std::size_t(i)] = true;
        const int lowest = std::max(0, own.trial - trialsApart);
        const int highest = std::min(trials - 1, own.trial + trialsApart);
        for (int trial = lowest; trial <= highest; ++trial) {
            const std::vector<int> &list = ofTrial[std::size_t(trial)];
            auto other = std::lower_bound(
                list.begin(), list.end(), own.first - widest - widest / 2 - pointsApart,
                [&](int index, int first) { return at(index).first < first; });
            const int end = own.first + own.width + own.width / 2 + pointsApart;
            for (; other != list.end() && at(*other).first <= end; ++other) {
                if (isTaken[std::size_t(*other)] && *other != i && areFriends(own, at(*other)))
                    join(i, *other);
            }
        }
    }

private:
    static bool areFriends(const BoxcarEvent &a, const BoxcarEvent &b)
    {
        const int reach = std::max(pointsApart, std::min(a.width, b.width) / 2);
        return a.first <= b.first + b.width + reach && b.first <= a.first + a.width + reach;
    }

    // `i` is the weakest of all that were taken.
    void join(int i, int other)
    {
        const int one = rootOf(i);
        const int two = rootOf(other);
        if (one == two)
            return;
        const int stronger = isStronger(one, two) ? one : two;
        const int weaker = stronger == one ? two : one;
        const float prominence = at(weaker).snr - at(i).snr;
        if (weaker != i && prominence > std::max(leastProminence, prominentShare * at(weaker).snr))
            return;
        root[std::size_t(weaker)] = stronger;
    }

    const std::vector<BoxcarEvent> &peaks;
    std::vector<std::vector<int>> ofTrial; // by first point
    std::vector<int> root;
    std::vector<bool> isTaken;
    int trials = 0;
    int widest = 1;
};

} // namespace

std::vector<std::vector<int>> groupsOfBoxcars(const std::vector<BoxcarEvent> &peaks)
{
    Joining joining(peaks);
    std::vector<int> order(peaks.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int a, int b) { return joining.isStronger(a, b); });
    for (const int i : order)
        joining.take(i);
    std::vector<int> groupOf(peaks.size(), -1);
    std::vector<std::vector<int>> groups;
    for (const int i : order) {
        const int root = joining.rootOf(i);
        if (root == i) {
            groupOf[std::size_t(i)] = int(groups.size());
            groups.emplace_back();
        }
        groups[std::size_t(groupOf[std::size_t(root)])].push_back(i);
    }
    return groups;
}

} // namespace Tools
