#include "fuzz/FuzzSeeds.h"

#include "fuzz/FuzzInput.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include <unistd.h>
#include <vector>

namespace {

std::string fileBytes(const mkddp::DiscFiles& files, const QString& name)
{
    const auto it = files.find(name);
    return it == files.end() ? std::string() : it->second.toStdString();
}

FuzzFiles fuzzFiles(const mkddp::DiscSpec& spec)
{
    const mkddp::DiscFiles files = mkddp::buildFiles(spec);
    FuzzFiles out;
    out.ddpid = fileBytes(files, QStringLiteral("DDPID"));
    out.ddpms = fileBytes(files, QStringLiteral("DDPMS"));
    out.pq = fileBytes(files, mkddp::pqFileName(spec));
    out.cdText = fileBytes(files, mkddp::cdTextFileName(spec));
    return out;
}

std::vector<std::pair<QString, mkddp::DiscSpec>> seedDiscs()
{
    using namespace mkddp;
    std::vector<std::pair<QString, DiscSpec>> discs;
    discs.emplace_back(QStringLiteral("simple"), simpleDisc(3, 10));
    discs.emplace_back(QStringLiteral("realistic"), realisticDisc());
    discs.emplace_back(QStringLiteral("demo"), demoDisc());

    DiscSpec japanese = realisticDisc();
    japanese.doubleByte = true;
    japanese.languageCode = 0x69;
    japanese.album.title = QStringLiteral("日本のアルバム");
    discs.emplace_back(QStringLiteral("double-byte"), japanese);

    DiscSpec bilingual = realisticDisc();
    bilingual.secondBlock = {bilingual.album, bilingual.tracks.value(0).text};
    discs.emplace_back(QStringLiteral("second-block"), bilingual);

    DiscSpec long3 = simpleDisc(3, 10);
    long3.tracks[0].pauseFrames = cdFrames(4);
    long3.tracks[1].indexOffsets = {cdFrames(2), cdFrames(5)};
    long3.pqHours = 1;
    discs.emplace_back(QStringLiteral("shown-pause-hours"), long3);

    // Names that lead out of the folder, or into a subfolder.
    DiscSpec climbing = realisticDisc();
    climbing.imageName = "../OUTSIDE";
    discs.emplace_back(QStringLiteral("image-outside"), climbing);
    DiscSpec absolute = realisticDisc();
    absolute.pqName = "/etc/hostname";
    discs.emplace_back(QStringLiteral("pq-absolute"), absolute);

    for (Fault fault : allFaults()) {
        // Files over the loader's limits are longer than a fuzz input may
        // be: cut short they are only slow seeds of a thousand table rows.
        if (fault == Fault::DdpmsTooLarge || fault == Fault::PqTooManyEntries ||
            fault == Fault::CdTextTooLarge)
            continue;
        DiscSpec spec = fault == Fault::CdTextBadDoubleByte ? japanese : realisticDisc();
        spec.faults = {fault};
        discs.emplace_back(QStringLiteral("fault-") + faultName(fault), spec);
    }
    return discs;
}

bool writeSeed(const char* dir, const QString& name, const std::string& input)
{
    QFile file(QFile::decodeName(dir) + QLatin1Char('/') + name);
    return file.open(QIODevice::WriteOnly) &&
           file.write(input.data(), static_cast<qint64>(input.size())) ==
               static_cast<qint64>(input.size());
}

} // namespace

int writeFuzzSeeds(const char* dir)
{
    int written = 0;
    for (const auto& [name, spec] : seedDiscs()) {
        if (!writeSeed(dir, name, joinFuzzInput(fuzzFiles(spec))))
            return 0;
        ++written;
    }
    // The realistic disc with each file of it replaced by something that is
    // not a regular file (the folder target's spare word, 3 bits a file).
    const FuzzFiles realistic = fuzzFiles(mkddp::realisticDisc());
    for (std::uint32_t file = 0; file < 5; ++file) {
        for (std::uint32_t kind = 1; kind < 7; ++kind) {
            const QString name = QStringLiteral("special-%1-%2").arg(file).arg(kind);
            if (!writeSeed(dir, name, joinFuzzInput(realistic, kind << (3 * file))))
                return 0;
            ++written;
        }
    }
    if (!writeSeed(dir, QStringLiteral("sparse-pq"), joinFuzzInput(realistic, 1u << 15)))
        return 0;
    return written + 1;
}

void writeSeedsAndExitIfAsked(const std::function<int(const char* dir)>& write)
{
    if (const char* dir = std::getenv("TIVORA_FUZZ_SEEDS")) {
        const int written = write(dir);
        std::printf("wrote %d seeds to %s\n", written, dir);
        std::exit(written > 0 ? 0 : 1);
    }
}

namespace {
QString g_fuzzRoot;
}

QString makeFuzzRoot(const QString& target)
{
    g_fuzzRoot = QDir::tempPath() + QStringLiteral("/tivora-%1-%2").arg(target).arg(::getpid());
    QDir().mkpath(g_fuzzRoot);
    QFile outside(g_fuzzRoot + QStringLiteral("/OUTSIDE"));
    if (outside.open(QIODevice::WriteOnly))
        outside.write("bytes that are not the DDP's");
    std::atexit([] { QDir(g_fuzzRoot).removeRecursively(); });
    return g_fuzzRoot;
}
