#pragma once

#include "report/PqSheet.h"
#include "verify/DigestRun.h"

#include <atomic>
#include <memory>
#include <vector>

class DDPModel;
class DiscImage;
class IDdpFileSource;
struct VerificationReport;

// The DDP's own files (DdpFiles.h: the same list verification uses) with
// their sizes and MD5s, for the PQ sheet, read once each through the same
// paths as playback (the audio streams through `image`, the rest through
// `source`). An MD5 the verification already computed is taken from it
// rather than read again. A file that cannot be read has no MD5; a
// cancelled run returns what it has.
std::vector<PqSheetFile> digestDdpFiles(const IDdpFileSource& source, const DDPModel& model,
                                        const std::shared_ptr<const DiscImage>& image,
                                        const VerificationReport* verification = nullptr,
                                        const std::atomic<bool>* cancel = nullptr,
                                        const DigestProgress& progress = {});
