#include "verify/DdpFiles.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileLookup.h"
#include "ddp/DdpFileSource.h"
#include "verify/ChecksumFile.h"

#include <QFile>

#include <algorithm>

std::string ddpDiskName(const std::string& mapName)
{
    return QFile::encodeName(ddpFileNameFromBytes(mapName)).toStdString();
}

std::vector<DdpFile> ddpFiles(const IDdpFileSource& source, const DDPModel& model)
{
    std::vector<DdpFile> files;
    auto add = [&](const std::string& mapName, std::optional<ImageStream> stream) {
        const std::string name = ddpDiskName(mapName);
        if (name.empty() || std::any_of(files.begin(), files.end(), [&name](const DdpFile& f) {
                return sameNameIgnoringCase(f.name, name);
            }))
            return;
        if (stream || source.exists(name))
            files.push_back({name, std::move(stream)});
    };
    add("DDPID", std::nullopt);
    add("DDPMS", std::nullopt);
    add(model.fileNames().pq, std::nullopt);
    add(model.fileNames().cdText, std::nullopt);
    for (const ImageStream& stream : model.imageLayout().streams)
        add(stream.name, stream);
    for (const SkippedStream& stream : model.imageLayout().skipped)
        add(stream.name, std::nullopt);
    // The identifier and the map are found ignoring case too: name them as
    // the DDP does.
    for (const std::string& listed : source.fileNames())
        for (DdpFile& file : files)
            if (sameNameIgnoringCase(file.name, listed))
                file.name = listed;
    return files;
}
