#include "ddp/DdpLoader.h"

#include "ddp/CdTextReader.h"
#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"
#include "ddp/DdpImageReader.h"
#include "ddp/ImageLayout.h"
#include "ddp/TrackTable.h"

#include <QStandardItemModel>

#include <exception>
#include <optional>

QStringList trackTableHeaderNames()
{
    return {QStringLiteral("Type"),      QStringLiteral("Track"),      QStringLiteral("Index"),
            QStringLiteral("CD-Time"),   QStringLiteral("Duration"),   QStringLiteral("Title"),
            QStringLiteral("Performer"), QStringLiteral("Songwriter"), QStringLiteral("Composer"),
            QStringLiteral("Arranger"),  QStringLiteral("Message"),    QStringLiteral("ISRC"),
            QStringLiteral("Usertext")};
}

namespace {

void resetTable(QStandardItemModel* table)
{
    table->setRowCount(0);
    table->setColumnCount(TrackTableRows::kColumnCount);
    table->setHorizontalHeaderLabels(trackTableHeaderNames());
}

void fillTable(QStandardItemModel* table, const TrackTableRows& rows)
{
    // Items are made only for cells that have a value.
    for (const TrackTableRows::Row& row : rows.rows) {
        QList<QStandardItem*> items;
        items.reserve(TrackTableRows::kColumnCount);
        for (const std::optional<QString>& cell : row)
            items.append(cell ? new QStandardItem(*cell) : nullptr);
        table->appendRow(items);
    }
}

LoadResult loadResult(ErrorKind kind, std::string message = {})
{
    return LoadResult{kind, std::move(message)};
}

// Everything a successful load hands over, built before anything is handed
// over, so that a failure leaves the table and the model untouched.
struct LoadedDisc
{
    std::optional<CdTextRecord> cdText;
    std::vector<PqEntry> entries;
    std::vector<PqEntry> pqEntries; // before the table's ISRC moves
    TrackTableRows rows;
    std::string imageName;
    std::string ddpIdUpcEan;
    std::string ddpLevel;
    ImageLayout layout;
    std::string imageMessage;
    // The table and the model are filled even without an image, so that the
    // engineer still sees the disc behind the error.
    bool imageMissing = false;
};

LoadResult loadDisc(const IDdpFileSource& source, LoadedDisc& disc, DDPModel& model)
{
    DdpImageReader reader;
    const ReadResult read = reader.read(source);
    model.setFileNames({reader.imageFileName(), reader.pqFileName(), reader.cdTextFileName()});
    if (read != ReadResult::Success)
        return loadResult(errorKindForReadResult(read), reader.failureDetail());

    try {
        disc.cdText = CdTextReader::read(source, reader.cdTextFileName());
    } catch (const std::exception& e) {
        return loadResult(ErrorKind::UnknownError, e.what());
    }

    try {
        disc.entries = reader.pqEntries();
        disc.pqEntries = disc.entries;
        correctIsrcs(disc.entries);
        disc.rows = buildTrackTableRows(disc.entries, disc.cdText ? &*disc.cdText : nullptr);
    } catch (const std::exception& e) {
        return loadResult(ErrorKind::PqdescrInvalid, e.what());
    }

    disc.ddpIdUpcEan = std::string(reader.idRecord().upcEan());
    disc.ddpLevel = std::string(reader.idRecord().levelText());
    LayoutResult layout = buildImageLayout(reader.mapPackets(), source);
    if (layout.status == LayoutResult::Invalid)
        return loadResult(ErrorKind::DdpmsInvalid, layout.message);
    disc.layout = std::move(layout.layout);
    disc.imageName =
        disc.layout.streams.empty() ? reader.imageFileName() : disc.layout.streams.front().name;
    disc.imageMissing = layout.status != LayoutResult::Ok;
    disc.imageMessage = std::move(layout.message);
    return loadResult(ErrorKind::NoError);
}

} // namespace

LoadResult loadDdp(const IDdpFileSource& source, QStandardItemModel* table, DDPModel& model)
{
    if (!table)
        return loadResult(ErrorKind::UnknownError);
    resetTable(table);

    LoadedDisc disc;
    LoadResult result;
    try {
        result = loadDisc(source, disc, model);
    } catch (const std::exception& e) {
        result = loadResult(ErrorKind::UnknownError, e.what());
    } catch (...) {
        result = loadResult(ErrorKind::UnknownError);
    }
    if (result.kind != ErrorKind::NoError)
        return result;

    try {
        if (disc.cdText)
            model.setCdText(*disc.cdText);
        model.setEntries(std::move(disc.entries));
        model.setPqEntries(std::move(disc.pqEntries));
        for (std::uint32_t index : disc.rows.indexList)
            model.appendIndex(index);
        model.setImageFileName(std::move(disc.imageName));
        model.setDdpIdUpcEan(std::move(disc.ddpIdUpcEan));
        model.setDdpLevel(std::move(disc.ddpLevel));
        model.setImageExtent(disc.layout.length(), pqAudioBytes(model.entries()));
        model.setImageLayout(std::move(disc.layout));
        fillTable(table, disc.rows);
    } catch (const std::exception& e) {
        // Only running out of memory gets here.
        resetTable(table);
        return loadResult(ErrorKind::UnknownError, e.what());
    }
    if (disc.imageMissing)
        return loadResult(ErrorKind::ImageMissing, disc.imageMessage);
    return result;
}

LoadResult loadDdp(const QString& folder, QStandardItemModel* table, DDPModel& model)
{
    return loadDdp(FolderFileSource(folder), table, model);
}
