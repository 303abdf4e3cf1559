#pragma once

#include <QString>

#include <functional>

// Writes the fuzzer's seed inputs into `dir` (which must exist): generated
// discs, sound and with each fault of the generator, each joined into one
// input (see FuzzInput.h). Returns the number written, 0 on failure.
int writeFuzzSeeds(const char* dir);

// When TIVORA_FUZZ_SEEDS names a folder, writes the seeds with `write` into
// it and exits (0 when any was written); otherwise returns.
void writeSeedsAndExitIfAsked(const std::function<int(const char* dir)>& write);

// A folder of this process's own for a target that works on disk, holding a
// file OUTSIDE that no DDP may ever reach; removed when the process exits.
QString makeFuzzRoot(const QString& target);
