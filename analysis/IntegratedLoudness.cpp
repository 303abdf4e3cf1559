#include "analysis/IntegratedLoudness.h"

#include "analysis/LoudnessUnits.h"

#include <algorithm>

namespace {

// The mean of the blocks over `gate`; 0 when none is.
double meanAbove(const std::vector<double>& energies, double gate)
{
    double sum = 0.0;
    std::size_t count = 0;
    for (double e : energies) {
        if (e > gate) {
            sum += e;
            ++count;
        }
    }
    return count == 0 ? 0.0 : sum / double(count);
}

} // namespace

double integratedLoudness(const std::vector<double>& blockEnergies)
{
    const double absoluteGate = energyOf(-70.0);
    const double ungated = meanAbove(blockEnergies, absoluteGate);
    if (ungated <= 0.0)
        return LoudnessResult::kMinusInfinity;
    // 10 LU under the mean of the blocks over the absolute gate.
    const double relativeGate = std::max(absoluteGate, ungated / 10.0);
    return lufsOf(meanAbove(blockEnergies, relativeGate));
}
