#pragma once

// Writes the fuzzer's seed inputs into `dir` (which must exist): generated
// discs, sound and with each fault of the generator, each joined into one
// input (see FuzzInput.h). Returns the number written, 0 on failure.
int writeFuzzSeeds(const char* dir);
