#pragma once

#include "ddp/ImageLayout.h"

#include <optional>
#include <string>
#include <vector>

class DDPModel;
class IDdpFileSource;

// One file of the DDP itself.
struct DdpFile
{
    std::string name; // as the file system (or the archive) has it
    // Set for an audio stream: where its bytes lie in the disc's image.
    std::optional<ImageStream> stream;
};

// The DDP's own files, each once: DDPID, DDPMS, the PQ descriptor, the
// CD-Text file, the audio streams in disc order and the streams that are not
// audio (an Enhanced CD's data session). The names come from the model, as
// the loader found them: nothing is read again but the source's listing.
// Files the source does not have are left out, but for the audio streams,
// which were there at load and are still read through the image opened then.
//
// Verification leaves these out of its search for checksum files and names
// those no checksum file lists; the PQ sheet prints each with its MD5.
std::vector<DdpFile> ddpFiles(const IDdpFileSource& source, const DDPModel& model);

// A name from the map as the file system has it: the bytes up to the first
// zero, as a local file name.
std::string ddpDiskName(const std::string& mapName);
