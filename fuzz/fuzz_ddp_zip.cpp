// libFuzzer target: the input is a ZIP archive, opened the way `tivora-ddp`
// and the window open one: the archive checks, the loader over the archive,
// then the disc's audio through DiscImage (stored entries read in place,
// compressed ones unpacked into the private folder) and read whole.
//
// Any crash, hang, leak or sanitizer report is a bug, and so is a file left
// anywhere but in the fuzzer's own folder, or left in the private folder
// once the disc is let go. The unpack limits are lowered so that a bomb
// costs a megabyte, not a gigabyte; the checks are the same.
//
// With TIVORA_FUZZ_SEEDS=DIR set, the binary writes its seed archives (discs
// of the test-disc generator, zipped by libzip: stored, deflated, in a
// folder, with a link and with a name leaving the archive) into DIR and exits.
#include "fuzz/FuzzSeeds.h"

#include "archive/ArchiveDdp.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/ImageLayout.h"
#include "tools/mkddp/Mkddp.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStandardItemModel>

#include <zip.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

QString g_root;   // the fuzzer's own folder under /tmp
QString g_input;  // where each input is written
QString g_unpack; // the private folders' base

struct SeedFile
{
    QByteArray name;
    QByteArray bytes;
    bool store = true;
    bool link = false;
};

bool writeZip(const QString& path, const std::vector<SeedFile>& files)
{
    int code = 0;
    zip_t* archive =
        zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!archive)
        return false;
    for (const SeedFile& file : files) {
        zip_source_t* source =
            zip_source_buffer(archive, file.bytes.constData(), zip_uint64_t(file.bytes.size()), 0);
        const zip_int64_t index = zip_file_add(archive, file.name.constData(), source, 0);
        if (index < 0) {
            zip_source_free(source);
            continue;
        }
        zip_set_file_compression(archive, zip_uint64_t(index),
                                 file.store ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
        if (file.link)
            zip_file_set_external_attributes(archive, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX,
                                             (S_IFLNK | 0777u) << 16);
    }
    return zip_close(archive) == 0;
}

// A small disc's files, with an image of a few CD frames (the PQ then says
// the image is short, which the loader takes): seeds stay under 64 KiB.
std::vector<SeedFile> discFiles(const QByteArray& folder, bool store)
{
    mkddp::DiscSpec spec = mkddp::simpleDisc(2, 1);
    spec.cdText = true;
    std::vector<SeedFile> files;
    for (const auto& [name, bytes] : mkddp::buildFiles(spec))
        files.push_back({folder + name.toUtf8(), bytes, store, false});
    files.push_back({folder + mkddp::imageFileName(spec).toUtf8(),
                     mkddp::TestPattern(spec).bytes(0, 2352 * 8), store, false});
    return files;
}

int writeSeeds(const QString& dir)
{
    int written = 0;
    auto seed = [&](const char* name, std::vector<SeedFile> files) {
        written += writeZip(QDir(dir).filePath(QString::fromLatin1(name)), files) ? 1 : 0;
    };
    seed("stored.zip", discFiles("", true));
    seed("deflated.zip", discFiles("", false));
    seed("folder.zip", discFiles("Master/", true));
    std::vector<SeedFile> link = discFiles("", true);
    link.push_back({"LINK.DAT", "/etc/passwd", true, true});
    seed("link.zip", link);
    std::vector<SeedFile> leaving = discFiles("", true);
    leaving.push_back({"../OUTSIDE", "x", true, false});
    seed("leaving.zip", leaving);
    return written;
}

// Every file under the fuzzer's folder but the input and the bait.
QStringList strayFiles()
{
    QStringList stray;
    QDirIterator it(g_root, QDir::Files | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (path != g_input && !path.endsWith(QLatin1String("/OUTSIDE")) &&
            !path.endsWith(QLatin1String(".lock")))
            stray.append(path);
    }
    return stray;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    writeSeedsAndExitIfAsked(
        [](const char* dir) { return writeSeeds(QString::fromLocal8Bit(dir)); });
    g_root = makeFuzzRoot(QStringLiteral("fuzz-zip"));
    g_input = g_root + QStringLiteral("/input.zip");
    g_unpack = g_root + QStringLiteral("/unpack");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    {
        QFile input(g_input);
        if (!input.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            input.write(reinterpret_cast<const char*>(data), qint64(size)) != qint64(size))
            std::abort();
    }
    ArchiveDdp::Options options;
    options.unpackBase = g_unpack;
    options.maxUnpackedImage = 1 << 20;
    options.maxUnpackedEntry = 4 << 20;
    {
        ArchiveDdp::Opened opened = ArchiveDdp::open(g_input, options);
        const ErrorKind kind = opened.result.kind;
        if (kind != ErrorKind::NoError && kind != ErrorKind::DdpidMissing &&
            kind != ErrorKind::DdpmsMissing && kind != ErrorKind::ArchiveInvalid) {
            std::fprintf(stderr, "unexpected kind %u\n", static_cast<unsigned>(kind));
            std::abort();
        }
        if ((kind == ErrorKind::NoError) != bool(opened.ddp)) {
            std::fprintf(stderr, "kind %u with%s an archive\n", static_cast<unsigned>(kind),
                         opened.ddp ? "" : "out");
            std::abort();
        }
        if (opened.ddp) {
            static QStandardItemModel* table = new QStandardItemModel;
            DDPModel model;
            const LoadResult result = loadDdp(*opened.ddp, table, model);
            if (result.kind == ErrorKind::NoError || result.kind == ErrorKind::ImageMissing) {
                LoadResult error;
                if (auto image = opened.ddp->openImage(model.imageLayout(), {}, nullptr, &error)) {
                    std::vector<char> bytes(64 * 1024);
                    for (std::uint64_t at = 0; at < image->length(); at += bytes.size())
                        if (image->read(at, bytes.data(), bytes.size()) == 0)
                            break;
                }
            }
        }
    }
    if (const QStringList stray = strayFiles(); !stray.isEmpty()) {
        std::fprintf(stderr, "left behind: %s\n", qPrintable(stray.join(QLatin1Char(' '))));
        std::abort();
    }
    return 0;
}
