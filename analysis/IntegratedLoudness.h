#pragma once

#include <vector>

// Integrated loudness (BS.1770-4) of a list of gating blocks given as
// weighted mean squares (400 ms windows, one every 100 ms): blocks at or
// under -70 LUFS are dropped, then those at or more than 10 LU under the
// mean of the rest; the loudness of the mean of what is left. Minus
// infinity when no block passes. Several parts together are measured by
// joining their lists.
double integratedLoudness(const std::vector<double>& blockEnergies);
