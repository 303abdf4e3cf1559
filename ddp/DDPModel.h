#pragma once

#include "ddp/CdTextRecord.h"
#include "ddp/IDescListProvider.h"
#include "ddp/IDrawInfoProvider.h"
#include "ddp/IMetaDataProvider.h"
#include "ddp/ITrackNumberModel.h"
#include "ddp/ImageLayout.h"
#include "ddp/PqEntry.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The files the map names, as it writes them: the first "D0" packet's and
// the "PQ DESCR" packet's identifiers without trailing white space, the
// "CDTEXT  " packet's without any blank. Empty where the map names none.
struct DdpFileNames
{
    std::string image;
    std::string pq;
    std::string cdText;
};

// One loaded disc. A fresh model is made for every load and shared by
// std::shared_ptr (made with std::make_shared): the window, the table
// delegate, the player and the export each hold a reference, so an old model
// lives until its last holder lets go.
//
// No lock: the GUI thread fills it before anyone else sees it; afterwards the
// player sets the current row and the playing flag on the GUI thread.
class DDPModel : public IDrawInfoProvider,
                 public IDescListProvider,
                 public Audio::ITrackNumberModel,
                 public IMetaDataProvider
{
public:
    // IDrawInfoProvider
    const std::vector<std::uint32_t>& indexList() const override { return m_indexList; }
    std::int32_t currentRow() const override { return m_currentRow; }

    // IDescListProvider (entries() serves IMetaDataProvider too)
    const std::vector<PqEntry>& entries() const override { return m_entries; }
    bool isFirstRowPause() const override; // throws "invalid vector subscript" on an empty list
    void setFirstTrackNumber(std::uint32_t number) override { m_firstTrackNumber = number; }
    std::uint32_t firstTrackNumber() const override { return m_firstTrackNumber; }
    void setPlaying(bool playing) override;

    // Audio::ITrackNumberModel
    void setCurrentRow(std::int32_t row) override { m_currentRow = row; }
    void setPlayingListener(std::function<void(bool)> listener) override;

    // IMetaDataProvider
    const CdTextRecord& cdText() const override { return m_cdText; }

    // Set by the loader as soon as the map is read, even when the load then
    // fails: a report can still name the files of a disc it cannot show.
    void setFileNames(DdpFileNames names) { m_fileNames = std::move(names); }
    const DdpFileNames& fileNames() const { return m_fileNames; }

    // Filled by the loader, in this order.
    void setCdText(const CdTextRecord& record);
    void setEntries(std::vector<PqEntry> entries) { m_entries = std::move(entries); }
    // The entries as the descriptor holds them: entries() has each ISRC
    // moved the way the table shows it; reports and cue sheets print these.
    // Empty for a model made without the loader: entries() then stands in.
    void setPqEntries(std::vector<PqEntry> entries) { m_pqEntries = std::move(entries); }
    const std::vector<PqEntry>& pqEntries() const
    {
        return m_pqEntries.empty() ? m_entries : m_pqEntries;
    }
    // The first row also sets the first-track number (1 when it is a pause,
    // else 2), so that the track ranges are right before the player has the
    // model; the player sets the same again when it loads the disc.
    void appendIndex(std::uint32_t index)
    {
        if (m_indexList.empty())
            m_firstTrackNumber = index == 0 ? 1 : 2;
        m_indexList.push_back(index);
    }
    void setImageFileName(std::string name) { m_imageFileName = std::move(name); }
    const std::string& imageFileName() const { return m_imageFileName; }
    // The UPC/EAN field of the DDPID (13 characters at offset 8), for the
    // info box when neither CD-Text nor the PQ entries carry one.
    void setDdpIdUpcEan(std::string code) { m_ddpIdUpcEan = std::move(code); }
    const std::string& ddpIdUpcEan() const { return m_ddpIdUpcEan; }
    // The identifier's level as it stands: "DDP 2.00", "DDP 1.01".
    void setDdpLevel(std::string level) { m_ddpLevel = std::move(level); }
    const std::string& ddpLevel() const { return m_ddpLevel; }

    // The audio image as found on load: its size, and how many bytes the PQ
    // entries need (up to the lead-out). An image shorter than that would
    // play and export silence where the disc has music.
    void setImageExtent(std::uint64_t size, std::uint64_t needed)
    {
        m_imageSize = size;
        m_imageNeeded = needed;
    }
    std::uint64_t imageSize() const { return m_imageSize; }
    // Where the audio lies: the map's audio streams in disc order, and the
    // streams left out because they are not audio.
    void setImageLayout(ImageLayout layout) { m_imageLayout = std::move(layout); }
    const ImageLayout& imageLayout() const { return m_imageLayout; }
    std::uint64_t imageShortBy() const
    {
        return m_imageNeeded > m_imageSize ? m_imageNeeded - m_imageSize : 0;
    }

    bool hasCdText() const { return !m_cdText.empty(); }
    bool isDoubleByte() const { return m_doubleByte; }
    bool isPlaying() const { return m_playing; }

private:
    // Declaration order matters: destruction releases the listener first,
    // then the CD-Text, the entries and the index list.
    std::vector<std::uint32_t> m_indexList;
    std::vector<PqEntry> m_entries;
    std::vector<PqEntry> m_pqEntries;
    CdTextRecord m_cdText;
    bool m_doubleByte = false;
    std::int32_t m_currentRow = -1;
    std::uint32_t m_firstTrackNumber = 1;
    bool m_playing = false;
    std::function<void(bool)> m_listener;
    std::string m_imageFileName;
    std::string m_ddpIdUpcEan;
    std::string m_ddpLevel;
    std::uint64_t m_imageSize = 0;
    std::uint64_t m_imageNeeded = 0;
    ImageLayout m_imageLayout;
    DdpFileNames m_fileNames;
};
