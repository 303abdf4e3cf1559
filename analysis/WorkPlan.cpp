#include "analysis/WorkPlan.h"

#include <algorithm>
#include <numeric>

namespace {

// The shares of a one-pass measurement that a split part costs, measured
// with libebur128 on this kind of machine: the loudness pass alone, and the
// true-peak passes (which convert and read the samples once more).
constexpr double kLoudnessShare = 0.22;
constexpr double kTruePeakShare = 0.81;

// When the cores end if the longest-first order is kept for `order`'s first
// parts and the rest are split: whole parts and loudness passes go each to
// the core that is free first; the true-peak stretches then fill the cores
// up evenly.
double estimatedEnd(const std::vector<std::size_t>& order, const std::vector<qint64>& lengths,
                    std::size_t kept, int workers)
{
    std::vector<double> load(std::size_t(workers), 0.0);
    auto give = [&load](double cost) { *std::min_element(load.begin(), load.end()) += cost; };
    double stretches = 0.0;
    for (std::size_t k = 0; k < order.size(); ++k) {
        const double length = double(lengths[order[k]]);
        if (k < kept) {
            give(length);
        } else {
            give(kLoudnessShare * length);
            stretches += kTruePeakShare * length;
        }
    }
    // Water-filling: the level to which the stretches raise the idle cores.
    std::sort(load.begin(), load.end());
    double level = load.front();
    double left = stretches;
    for (std::size_t w = 0; w < load.size() && left > 0.0; ++w) {
        const double next = w + 1 < load.size() ? load[w + 1] : level + left / double(w + 1);
        const double room = (next - level) * double(w + 1);
        if (room >= left) {
            level += left / double(w + 1);
            left = 0.0;
        } else {
            level = next;
            left -= room;
        }
    }
    return std::max(load.back(), level);
}

} // namespace

WorkPlan planWork(const std::vector<qint64>& starts, const std::vector<qint64>& lengths,
                  int workers, qint64 stretchBytes)
{
    const std::size_t n = lengths.size();
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(),
                     [&lengths](std::size_t a, std::size_t b) { return lengths[a] > lengths[b]; });

    // Keep as many parts whole as gives the earliest end; a few splits at
    // the tail are all that ever helps.
    std::size_t kept = n;
    if (workers > 1) {
        double best = estimatedEnd(order, lengths, n, workers);
        const std::size_t fewest = n > std::size_t(2 * workers) ? n - std::size_t(2 * workers) : 0;
        for (std::size_t k = n; k-- > fewest;) {
            const double end = estimatedEnd(order, lengths, k, workers);
            // Only a clear gain is worth the extra work.
            if (end < best * 0.995) {
                best = end;
                kept = k;
            }
        }
    }

    WorkPlan plan;
    plan.split.assign(n, false);
    for (std::size_t k = 0; k < kept; ++k)
        plan.items.push_back(
            {WorkItem::Whole, order[k], starts[order[k]], starts[order[k]] + lengths[order[k]]});
    for (std::size_t k = kept; k < n; ++k) {
        plan.split[order[k]] = true;
        plan.items.push_back(
            {WorkItem::Loudness, order[k], starts[order[k]], starts[order[k]] + lengths[order[k]]});
    }
    for (std::size_t k = kept; k < n; ++k) {
        const std::size_t part = order[k];
        const qint64 end = starts[part] + lengths[part];
        qint64 at = starts[part];
        do {
            const qint64 to = std::min(end, at + stretchBytes);
            plan.items.push_back({WorkItem::TruePeak, part, at, to});
            at = to;
        } while (at < end);
    }
    return plan;
}
