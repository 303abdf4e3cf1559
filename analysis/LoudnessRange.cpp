#include "analysis/LoudnessRange.h"

#include "analysis/LoudnessUnits.h"

#include <algorithm>
#include <cmath>

namespace {

// The value at the rounded rank, as Tech 3342 reads its percentiles.
double percentile(const std::vector<double>& sorted, double p)
{
    const auto rank = std::size_t(std::lround(p * double(sorted.size() - 1)));
    return sorted[std::min(rank, sorted.size() - 1)];
}

} // namespace

double loudnessRange(std::vector<double> energies)
{
    const double absoluteGate = energyOf(-70.0);
    energies.erase(std::remove_if(energies.begin(), energies.end(),
                                  [absoluteGate](double e) { return !(e > absoluteGate); }),
                   energies.end());
    if (energies.empty())
        return 0.0;
    double sum = 0.0;
    for (double e : energies)
        sum += e;
    const double relativeGate = energyOf(lufsOf(sum / double(energies.size())) - 20.0);
    std::vector<double> gated;
    for (double e : energies) {
        if (e > relativeGate)
            gated.push_back(lufsOf(e));
    }
    if (gated.empty())
        return 0.0;
    std::sort(gated.begin(), gated.end());
    return percentile(gated, 0.95) - percentile(gated, 0.10);
}
