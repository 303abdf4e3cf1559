// libFuzzer target: the same four files as fuzz_ddp_load (see FuzzInput.h),
// written into a real folder and loaded from there, so that the folder-level
// paths run as well: names from the map (case, zero padding, "..", absolute
// names, subfolders), what stands at each name (a regular file, a pipe, a
// folder, a link in or out of the DDP, nothing) and sizes past the limits.
//
// The header's spare word picks what stands at each name, three bits a file
// in the order DDPID, DDPMS, PQ descriptor, CD-Text, image:
//   0 and 7 a regular file, 1 a named pipe, 2 a folder, 3 a link to
//   /dev/zero, 4 a link to a file beside the DDP folder, 5 nothing, 6 a link
//   to a regular file inside the DDP; bit 15 makes the PQ descriptor a
//   sparse file of 100 MB.
// Any hang (a pipe opened for reading), any read outside the folder, and any
// crash or sanitizer report is a bug.
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzSeeds.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpImageReader.h"
#include "ddp/DdpLoader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardItemModel>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QString g_root;   // the fuzzer's own folder under /tmp
QString g_folder; // the DDP folder inside it, emptied for every input

std::uint32_t spareWord(const std::uint8_t* data, std::size_t size)
{
    if (size < 16)
        return 0;
    return data[12] | (data[13] << 8) | (data[14] << 16) | (std::uint32_t(data[15]) << 24);
}

// Only plain names are written: the harness itself must never write outside
// the folder, whatever the map says.
bool plainName(const std::string& name)
{
    const std::string cut = name.substr(0, name.find('\0'));
    return !cut.empty() && cut != "." && cut != ".." && cut.find('/') == std::string::npos;
}

void place(const std::string& mapName, const std::string& bytes, unsigned kind, bool sparse)
{
    if (!plainName(mapName))
        return;
    const QString path = QDir(g_folder).filePath(
        QFile::decodeName(QByteArray::fromStdString(mapName.substr(0, mapName.find('\0')))));
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
        return; // two streams named alike: the first one stays
    const QByteArray native = QFile::encodeName(path);
    switch (kind) {
    case 1:
        (void)::mkfifo(native.constData(), 0600);
        return;
    case 2:
        QDir().mkdir(path);
        return;
    case 3:
        (void)::symlink("/dev/zero", native.constData());
        return;
    case 4:
        (void)::symlink("../OUTSIDE", native.constData());
        return;
    case 5:
        return;
    case 6:
        (void)::symlink("INSIDE", native.constData());
        return;
    default:
        break;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    if (sparse)
        file.resize(100 * 1000 * 1000);
}

void emptyFolder()
{
    QDir dir(g_folder);
    const QFileInfoList entries =
        dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir() && !entry.isSymLink())
            QDir(entry.filePath()).removeRecursively();
        else
            QFile::remove(entry.filePath());
    }
}

// A resolved name is empty or lies in the folder, links followed.
bool insideFolder(const FolderFileSource& source, const std::string& name)
{
    const QString path = source.path(name);
    if (path.isEmpty() || !QFileInfo::exists(path))
        return true;
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.startsWith(QFileInfo(g_folder).canonicalFilePath() + QLatin1Char('/'));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    writeSeedsAndExitIfAsked(writeFuzzSeeds);
    g_root = makeFuzzRoot(QStringLiteral("fuzz-folder"));
    g_folder = g_root + QStringLiteral("/ddp");
    QDir().mkpath(g_folder);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const FuzzFiles files = splitFuzzInput(data, size);
    const std::uint32_t kinds = spareWord(data, size);
    auto kindOf = [kinds](int file) { return (kinds >> (3 * file)) & 7u; };

    emptyFolder();
    QFile inside(g_folder + QStringLiteral("/INSIDE"));
    if (inside.open(QIODevice::WriteOnly))
        inside.write(files.pq.data(), static_cast<qint64>(files.pq.size()));
    inside.close();

    place("DDPID", files.ddpid, kindOf(0), false);
    place("DDPMS", files.ddpms, kindOf(1), false);
    MemoryFileSource map;
    map.setFile("DDPID", files.ddpid);
    map.setFile("DDPMS", files.ddpms);
    DdpImageReader names;
    names.read(map);
    place(names.pqFileName(), files.pq, kindOf(2), (kinds >> 15) & 1u);
    place(names.cdTextFileName(), files.cdText, kindOf(3), false);
    place(names.imageFileName(), std::string(2352, '\0'), kindOf(4), false);

    const FolderFileSource source(g_folder);
    for (const std::string& name :
         {names.pqFileName(), names.cdTextFileName(), names.imageFileName()}) {
        if (!insideFolder(source, name)) {
            std::fprintf(stderr, "a map name resolved outside the DDP folder\n");
            std::abort();
        }
    }

    static QStandardItemModel* table = new QStandardItemModel;
    DDPModel model;
    const LoadResult result = loadDdp(g_folder, table, model);
    if (result.kind == ErrorKind::NoError && !source.exists(names.imageFileName())) {
        std::fprintf(stderr, "loaded without a regular image file\n");
        std::abort();
    }
    return 0;
}
