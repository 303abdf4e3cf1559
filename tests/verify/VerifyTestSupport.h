#pragma once

// Generated discs loaded the way the window loads them, for the verify tests.

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpLoader.h"
#include "ddp/ErrorKind.h"
#include "tools/mkddp/Mkddp.h"

#include <QStandardItemModel>

#include <memory>

namespace verifytest {

// A disc held in memory: the generator's files, loaded.
struct MemoryDisc
{
    std::shared_ptr<MemoryFileSource> source = std::make_shared<MemoryFileSource>();
    std::shared_ptr<DDPModel> model = std::make_shared<DDPModel>();
    DdpFileNames names;
    LoadResult result;

    std::string cdTextBytes() const { return file(names.cdText); }
    std::string pqBytes() const { return file(names.pq); }
    std::string file(const std::string& mapName) const
    {
        return source->content(mapName.substr(0, mapName.find_last_not_of(' ') + 1))
            .value_or(std::string());
    }
};

inline MemoryDisc loadInMemory(const mkddp::DiscSpec& spec, bool withImage)
{
    MemoryDisc disc;
    for (const auto& [name, bytes] : mkddp::buildFiles(spec, withImage))
        disc.source->setFile(name.toStdString(), bytes.toStdString());
    QStandardItemModel table;
    disc.result = loadDdp(*disc.source, &table, *disc.model, &disc.names);
    return disc;
}

// The image's files in memory as the disc's DiscImage (one stream).
inline std::shared_ptr<const DiscImage> memoryImage(const MemoryDisc& disc)
{
    const ImageLayout& layout = disc.model->imageLayout();
    if (layout.streams.size() != 1)
        return nullptr;
    return disc.source->openWholeFile(layout.streams.front().name);
}

} // namespace verifytest
