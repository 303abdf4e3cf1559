#pragma once

#include <vector>

// Loudness range (EBU Tech 3342) of a list of short-term loudness values
// given as weighted mean squares (3 s windows, one every 100 ms): blocks
// under -70 LUFS are dropped, then those more than 20 LU under the mean of
// the rest; the range runs from the 10th to the 95th percentile of what is
// left. Ranges of several parts together are the range of their lists
// joined. 0 when no block passes the gates.
double loudnessRange(std::vector<double> energies);
