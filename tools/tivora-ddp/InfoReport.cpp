#include "tools/tivora-ddp/InfoReport.h"

#include "archive/ArchiveDdp.h"

#include "ddp/CdTextStrings.h"
#include "ddp/DdpFileLookup.h"
#include "ddp/DdpFolderCheck.h"
#include "ddp/ErrorTexts.h"
#include "ddp/HiddenTrack.h"
#include "tools/tivora-ddp/TerminalText.h"
#include "verify/Verification.h"
#include "verify/VerificationText.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardItemModel>

#include <algorithm>

InfoReport makeInfoReport(const QString& path)
{
    InfoReport report;
    report.table = std::make_shared<QStandardItemModel>();
    report.table->setHorizontalHeaderLabels(trackTableHeaderNames());
    report.model = std::make_shared<DDPModel>();

    const QFileInfo info(path);
    if (!info.exists()) {
        report.result.kind = ErrorKind::InvalidPath;
        return report;
    }
    if (isZipArchivePath(path)) {
        report.folder = info.absoluteFilePath();
        ArchiveDdp::Opened opened = ArchiveDdp::open(report.folder);
        report.result = opened.result;
        if (!opened.ddp)
            return report;
        report.archive = opened.ddp;
        report.result = loadDdp(*report.archive, report.table.get(), *report.model);
        // A file the directory lists but that does not unpack to what it
        // claims is the archive's fault, not the DDP's.
        if (const std::string damage = report.archive->damage(); !damage.empty())
            report.result = {ErrorKind::ArchiveInvalid, damage};
        return report;
    }
    report.folder = ddpFolderForDroppedPath(path);
    report.result.kind = openDialogCheck(report.folder);
    if (report.result.kind != ErrorKind::NoError)
        return report;
    report.result = loadDdp(report.folder, report.table.get(), *report.model);
    // As the window does: a first pause that holds audio reads so in its row.
    if (report.result.kind == ErrorKind::NoError)
        if (const auto image = openDiscImage(report.folder, report.model->imageLayout()))
            markHiddenTrack(*report.model, *report.table, *image);
    return report;
}

std::shared_ptr<const DiscImage>
openReportImage(const InfoReport& report, LoadResult* error,
                const std::function<void(std::uint64_t, std::uint64_t)>& progress)
{
    if (report.archive)
        return report.archive->openImage(report.model->imageLayout(), progress, nullptr, error);
    QString why;
    std::shared_ptr<const DiscImage> image =
        openDiscImage(report.folder, report.model->imageLayout(), &why);
    if (!image && error)
        *error = {ErrorKind::ImageMissing, why.toStdString()};
    return image;
}

void addVerification(InfoReport& report)
{
    if (report.result.kind != ErrorKind::NoError && report.result.kind != ErrorKind::ImageMissing)
        return;
    std::shared_ptr<const DiscImage> image = openReportImage(report, nullptr);
    if (report.archive) {
        report.verification =
            std::make_shared<VerificationReport>(verifyDisc(*report.archive, *report.model, image));
        return;
    }
    const FolderFileSource source(report.folder);
    report.verification =
        std::make_shared<VerificationReport>(verifyDisc(source, *report.model, image));
}

namespace {

QJsonValue cellValue(const QStandardItemModel& table, int row, int column)
{
    const QStandardItem* item = table.item(row, column);
    return item ? QJsonValue(item->text()) : QJsonValue(QJsonValue::Null);
}

QJsonValue cdTextJson(const DDPModel& model)
{
    if (!model.hasCdText())
        return QJsonValue(QJsonValue::Null);
    const CdTextRecord& record = model.cdText();
    QJsonArray tracks;
    for (const CdTextRecord::TrackTexts& texts : record.tracks) {
        auto text = [&](CdTextRecord::SlotIndex slot) { return cdTextString(record, texts[slot]); };
        tracks.append(QJsonObject{
            {QStringLiteral("title"), text(CdTextRecord::Title)},
            {QStringLiteral("performer"), text(CdTextRecord::Performer)},
            {QStringLiteral("songwriter"), text(CdTextRecord::Songwriter)},
            {QStringLiteral("composer"), text(CdTextRecord::Composer)},
            {QStringLiteral("arranger"), text(CdTextRecord::Arranger)},
            {QStringLiteral("message"), text(CdTextRecord::Message)},
            {QStringLiteral("code"), text(CdTextRecord::Code)},
        });
    }
    return QJsonObject{
        {QStringLiteral("doubleByte"), record.doubleByte},
        {QStringLiteral("genre"), QString::fromStdString(record.genre)},
        {QStringLiteral("album"), cdTextString(record, record.album)},
        {QStringLiteral("tracks"), tracks},
    };
}

// The audio streams in disc order: file name, first byte on the disc, length.
QJsonArray streamsJson(const ImageLayout& layout)
{
    QJsonArray streams;
    for (const ImageStream& stream : layout.streams)
        streams.append(QJsonObject{{QStringLiteral("name"), ddpFileNameFromBytes(stream.name)},
                                   {QStringLiteral("discOffset"), qint64(stream.discOffset)},
                                   {QStringLiteral("length"), qint64(stream.length)}});
    return streams;
}

QJsonArray skippedStreamsJson(const ImageLayout& layout)
{
    QJsonArray skipped;
    for (const SkippedStream& stream : layout.skipped)
        skipped.append(
            QJsonObject{{QStringLiteral("name"), ddpFileNameFromBytes(stream.name)},
                        {QStringLiteral("mode"), QString::fromLatin1(stream.mode.c_str())}});
    return skipped;
}

} // namespace

QByteArray infoReportJson(const InfoReport& report)
{
    const QStandardItemModel& table = *report.table;
    QJsonArray rows;
    for (int r = 0; r < table.rowCount(); ++r) {
        QJsonArray cells;
        for (int c = 0; c < table.columnCount(); ++c)
            cells.append(cellValue(table, r, c));
        rows.append(cells);
    }
    QJsonArray indexList;
    for (std::uint32_t index : report.model->indexList())
        indexList.append(static_cast<qint64>(index));

    // Named as far as the map was read, a failed load included.
    const DdpFileNames& files = report.model->fileNames();
    QJsonObject object{
        {QStringLiteral("kind"), static_cast<int>(report.result.kind)},
        {QStringLiteral("title"), errorTitle(report.result.kind)},
        {QStringLiteral("message"), QString::fromStdString(report.result.message)},
        {QStringLiteral("files"),
         QJsonObject{
             {QStringLiteral("image"), ddpFileNameFromBytes(files.image)},
             {QStringLiteral("pq"), ddpFileNameFromBytes(files.pq)},
             {QStringLiteral("cdText"), ddpFileNameFromBytes(files.cdText)},
         }},
        {QStringLiteral("columns"), QJsonArray::fromStringList(trackTableHeaderNames())},
        {QStringLiteral("rows"), rows},
        {QStringLiteral("indexList"), indexList},
        {QStringLiteral("cdText"), cdTextJson(*report.model)},
        {QStringLiteral("imageShortBy"), static_cast<qint64>(report.model->imageShortBy())},
        {QStringLiteral("streams"), streamsJson(report.model->imageLayout())},
        {QStringLiteral("skippedStreams"), skippedStreamsJson(report.model->imageLayout())},
        {QStringLiteral("cdTextFitsLeadIn"), report.model->hasCdText()
                                                 ? QJsonValue(report.model->cdText().fitsLeadIn())
                                                 : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("ddpidUpcEan"), QString::fromLatin1(report.model->ddpIdUpcEan().c_str())},
        // Where the DDP lies when it is inside a ZIP archive: the archive and
        // the folder in it ("" at its root).
        {QStringLiteral("archive"),
         report.archive ? QJsonValue(report.archive->archivePath()) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("archiveFolder"),
         report.archive ? QJsonValue(ddpFileNameFromBytes(report.archive->folderInArchive()))
                        : QJsonValue(QJsonValue::Null)},
    };
    if (report.verification) {
        object.insert(QStringLiteral("checksums"), checksumsJson(*report.verification));
        object.insert(QStringLiteral("findings"), findingsJson(report.verification->findings));
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

// Every value that comes from the disc or the command line passes through
// terminalText: the table goes to a terminal.
QByteArray infoReportText(const InfoReport& report)
{
    QString out;
    if (report.archive && !report.archive->folderInArchive().empty())
        out += QStringLiteral("DDP: %1, folder %2\n")
                   .arg(terminalText(report.folder),
                        terminalText(ddpFileNameFromBytes(report.archive->folderInArchive())));
    else if (!report.folder.isEmpty())
        out += QStringLiteral("DDP: %1\n").arg(terminalText(report.folder));
    if (report.result.kind != ErrorKind::NoError) {
        out += QStringLiteral("Error %1: %2\n")
                   .arg(static_cast<int>(report.result.kind))
                   .arg(errorTitle(report.result.kind));
        out += plainErrorText(report.result.kind) + QLatin1Char('\n');
        if (!report.result.message.empty())
            out += QStringLiteral("Message: %1\n")
                       .arg(terminalText(QString::fromStdString(report.result.message)));
        // Without its image the disc is still worth seeing.
        if (report.result.kind != ErrorKind::ImageMissing)
            return out.toUtf8();
        out += QLatin1Char('\n');
    }

    const DDPModel& model = *report.model;
    out += QStringLiteral("Image: %1\n")
               .arg(terminalText(ddpFileNameFromBytes(model.fileNames().image)));
    const ImageLayout& layout = model.imageLayout();
    if (layout.streams.size() > 1) {
        for (const ImageStream& stream : layout.streams)
            out += QStringLiteral("  stream %1 from byte %2, %3 bytes\n")
                       .arg(terminalText(ddpFileNameFromBytes(stream.name)))
                       .arg(stream.discOffset)
                       .arg(stream.length);
    }
    for (const SkippedStream& stream : layout.skipped)
        out += QStringLiteral("Note: %1\n").arg(terminalText(skippedStreamText(stream)));
    if (model.imageShortBy() > 0)
        out += QStringLiteral("Warning: %1\n").arg(imageShortText(model.imageShortBy()));
    if (model.hasCdText() && !model.cdText().fitsLeadIn())
        out += QStringLiteral("Warning: %1\n")
                   .arg(QString::fromStdString(model.cdText().leadInWarning()));
    if (model.hasCdText()) {
        const CdTextRecord& record = model.cdText();
        const QString album = terminalText(cdTextString(record, 0, CdTextRecord::Title));
        const QString performer = terminalText(cdTextString(record, 0, CdTextRecord::Performer));
        out += QStringLiteral("Album: %1%2\n")
                   .arg(album, performer.isEmpty() ? QString() : QStringLiteral(" / ") + performer);
        if (!record.genre.empty())
            out += QStringLiteral("Genre: %1\n")
                       .arg(terminalText(QString::fromStdString(record.genre)));
    }
    const QString upc = terminalText(QString::fromLatin1(model.ddpIdUpcEan().c_str()).trimmed());
    // Mastering tools write zeros when the disc has no code.
    if (!upc.isEmpty() && upc != QString(upc.size(), QLatin1Char('0')))
        out += QStringLiteral("UPC/EAN: %1\n").arg(upc);
    out += QLatin1Char('\n');

    // Only the columns that hold something, each as wide as its longest cell.
    const QStandardItemModel& table = *report.table;
    const QStringList names = trackTableHeaderNames();
    auto cell = [&table](int r, int c) {
        const QStandardItem* item = table.item(r, c);
        return item ? terminalText(item->text()) : QString();
    };
    QList<int> columns;
    QList<int> widths;
    for (int c = 0; c < table.columnCount(); ++c) {
        int width = 0;
        for (int r = 0; r < table.rowCount(); ++r)
            width = std::max(width, static_cast<int>(cell(r, c).size()));
        if (width > 0) {
            columns.append(c);
            widths.append(std::max(width, static_cast<int>(names.at(c).size())));
        }
    }
    auto line = [&](auto cellText) {
        QString text;
        for (int i = 0; i < columns.size(); ++i)
            text += cellText(columns.at(i)).leftJustified(widths.at(i) + 2);
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        out += text + QLatin1Char('\n');
    };
    line([&](int c) { return names.at(c); });
    for (int r = 0; r < table.rowCount(); ++r)
        line([&](int c) { return cell(r, c); });
    return out.toUtf8();
}
