#pragma once

#include <QtGlobal>

#include <cstddef>
#include <vector>

// How the parts of a programme are shared among the cores. Each part is
// measured in one pass, longest first, so that the cores finish together;
// but when the last parts would leave a core idle while another finishes a
// long one, those parts are split: their loudness in one pass (the gating
// blocks and the filters' state run on through the whole part), their true
// peak, three quarters of the work, in short stretches that any core takes.
// Splitting costs a few percent more work for that part, so it is done only
// where the estimate says the whole run ends sooner.
struct WorkItem
{
    enum Kind
    {
        Whole,    // loudness and true peak of the part in one pass
        Loudness, // everything but the true peak, in one pass
        TruePeak, // the true peak of [start, end) of the part
    };
    Kind kind = Whole;
    std::size_t part = 0; // index into the parts
    qint64 start = 0;     // bytes in the image
    qint64 end = 0;
};

struct WorkPlan
{
    std::vector<WorkItem> items; // in the order the cores take them
    std::vector<bool> split;     // per part: its true peak comes from TruePeak items
};

// `lengths` in bytes, `starts` where each part begins; `workers` cores.
// True-peak stretches are at most `stretchBytes` long.
WorkPlan planWork(const std::vector<qint64>& starts, const std::vector<qint64>& lengths,
                  int workers, qint64 stretchBytes);
