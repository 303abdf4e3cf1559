#include "export/Mp3Encoder.h"

#include "export/PartFile.h"

#include <QCoreApplication>
#include <QFile>

#include <lame/lame.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tpropertymap.h>

#include <cerrno>
#include <cstdint>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("Mp3Encoder", text);
}

TagLib::String tagText(const QString& text)
{
    return TagLib::String(text.toUtf8().constData(), TagLib::String::UTF8);
}

} // namespace

Mp3Encoder::~Mp3Encoder()
{
    if (m_lame)
        lame_close(m_lame);
}

QString Mp3Encoder::begin(QFile& out, qint64 pcmBytes, const TrackTags& tags)
{
    m_out = &out;
    m_tags = tags;
    m_lame = lame_init();
    if (!m_lame)
        return tr("not enough memory for the MP3 encoder");
    lame_set_num_channels(m_lame, 2);
    lame_set_in_samplerate(m_lame, 44100);
    lame_set_out_samplerate(m_lame, 44100);
    lame_set_num_samples(m_lame, static_cast<unsigned long>(pcmBytes / 4));
    lame_set_VBR(m_lame, vbr_off);
    lame_set_brate(m_lame, 320);
    lame_set_mode(m_lame, JOINT_STEREO);
    lame_set_quality(m_lame, 2);
    lame_set_bWriteVbrTag(m_lame, 1); // the info frame, filled in at the end
    if (lame_init_params(m_lame) < 0)
        return tr("the MP3 encoder refused its settings");
    return {};
}

QString Mp3Encoder::writeOut(int bytes)
{
    if (bytes < 0)
        return tr("the MP3 encoder failed (%1)").arg(bytes);
    if (m_out->write(reinterpret_cast<const char*>(m_mp3.data()), bytes) != bytes)
        return PartFile::systemReason(*m_out, errno);
    return {};
}

QString Mp3Encoder::encode(const char* pcm, qint64 size)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(pcm);
    const int frames = int(size / 4);
    m_left.resize(std::size_t(frames));
    m_right.resize(std::size_t(frames));
    for (int i = 0; i < frames; ++i) {
        m_left[std::size_t(i)] = short(std::uint16_t(bytes[4 * i] | (bytes[4 * i + 1] << 8)));
        m_right[std::size_t(i)] = short(std::uint16_t(bytes[4 * i + 2] | (bytes[4 * i + 3] << 8)));
    }
    // The worst case LAME documents: 1.25 × samples + 7200 bytes.
    m_mp3.resize(std::size_t(frames) * 5 / 4 + 7200);
    const int written = lame_encode_buffer(m_lame, m_left.data(), m_right.data(), frames,
                                           m_mp3.data(), int(m_mp3.size()));
    return writeOut(written);
}

QString Mp3Encoder::finish()
{
    m_mp3.resize(7200);
    QString error = writeOut(lame_encode_flush(m_lame, m_mp3.data(), int(m_mp3.size())));
    if (!error.isEmpty())
        return error;
    // The info frame takes the place LAME left for it at the start.
    m_mp3.resize(2880);
    const std::size_t size = lame_get_lametag_frame(m_lame, m_mp3.data(), m_mp3.size());
    if (size > 0 && size <= m_mp3.size()) {
        const qint64 end = m_out->pos();
        if (!m_out->seek(0))
            return PartFile::systemReason(*m_out, errno);
        error = writeOut(int(size));
        if (!error.isEmpty())
            return error;
        if (!m_out->seek(end))
            return PartFile::systemReason(*m_out, errno);
    }
    return {};
}

QString Mp3Encoder::finishClosedFile(const QString& path)
{
    TagLib::PropertyMap properties;
    auto put = [&properties](const char* key, const QString& value) {
        if (!value.isEmpty())
            properties.insert(key, TagLib::StringList(tagText(value)));
    };
    put("TITLE", m_tags.title);
    put("ARTIST", m_tags.performer);
    put("ALBUM", m_tags.album);
    put("ALBUMARTIST", m_tags.albumArtist);
    put("COMPOSER", m_tags.composer);
    if (m_tags.trackNumber > 0)
        put("TRACKNUMBER",
            m_tags.trackTotal > 0
                ? QStringLiteral("%1/%2").arg(m_tags.trackNumber).arg(m_tags.trackTotal)
                : QString::number(m_tags.trackNumber));
    put("ISRC", m_tags.isrc);
    put("BARCODE", m_tags.barcode);
    if (properties.isEmpty())
        return {};

    TagLib::MPEG::File file(QFile::encodeName(path).constData(), false);
    if (!file.isValid())
        return tr("TagLib could not read the MP3 it was to tag");
    file.ID3v2Tag(true)->setProperties(properties);
    // ID3v2.3: the version every player, Windows' own included, reads.
    if (!file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers, TagLib::ID3v2::v3,
                   TagLib::File::DoNotDuplicate))
        return tr("TagLib could not write the MP3's tags");
    return {};
}
