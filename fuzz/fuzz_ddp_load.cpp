// libFuzzer target: one input split into DDPID, DDPMS, PQ descriptor and
// CD-Text bytes, loaded through the same entry the window uses, from memory.
// Any crash, leak or sanitizer report is a bug; every input must end in
// exactly one error kind with nothing half loaded.
//
// With TIVORA_FUZZ_SEEDS=DIR set, the binary writes its seed discs (made by
// the test-disc generator) into DIR and exits.
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzSeeds.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpImageReader.h"
#include "ddp/DdpLoader.h"

#include <QStandardItemModel>

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    writeSeedsAndExitIfAsked(writeFuzzSeeds);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const FuzzFiles files = splitFuzzInput(data, size);

    // The map decides the other files' names: put the PQ, CD-Text and image
    // bytes where it points.
    MemoryFileSource source;
    source.setFile("DDPID", files.ddpid);
    source.setFile("DDPMS", files.ddpms);
    DdpImageReader names;
    names.read(source);
    if (!names.cdTextFileName().empty())
        source.setFile(names.cdTextFileName(), files.cdText);
    if (!names.imageFileName().empty())
        source.setFile(names.imageFileName(), std::string());
    if (!names.pqFileName().empty())
        source.setFile(names.pqFileName(), files.pq);

    static QStandardItemModel* table = new QStandardItemModel; // reused like the window's
    DDPModel model;
    const LoadResult result = loadDdp(source, table, model);
    const bool ok = result.kind == ErrorKind::NoError;
    const bool empty = table->rowCount() == 0 && model.entries().empty() &&
                       model.indexList().empty() && !model.hasCdText();
    // Only a missing image leaves the disc in view; any other failure keeps
    // nothing.
    if (!ok && result.kind != ErrorKind::ImageMissing && !empty) {
        std::fprintf(stderr, "kind %u left the table or the model half filled\n",
                     static_cast<unsigned>(result.kind));
        std::abort();
    }
    if (!ok && result.kind != ErrorKind::DdpidInvalid && result.kind != ErrorKind::DdpmsInvalid &&
        result.kind != ErrorKind::PqdescrInvalid && result.kind != ErrorKind::UnknownError &&
        result.kind != ErrorKind::ImageMissing) {
        std::fprintf(stderr, "unexpected kind %u\n", static_cast<unsigned>(result.kind));
        std::abort();
    }
    if (ok && static_cast<std::size_t>(table->rowCount()) < model.indexList().size()) {
        std::fprintf(stderr, "fewer rows than index numbers\n");
        std::abort();
    }
    return 0;
}
