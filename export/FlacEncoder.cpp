#include "export/FlacEncoder.h"

#include "export/PartFile.h"

#include <QCoreApplication>
#include <QFile>

#include <FLAC/metadata.h>
#include <FLAC/stream_encoder.h>

#include <cerrno>
#include <cstdint>

static_assert(sizeof(FLAC__int32) == sizeof(int), "libFLAC samples are ints");

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("FlacEncoder", text);
}

// The stream goes through the open QFile: libFLAC seeks back at the end to
// fill in the stream info (length, MD5 of the audio).
FLAC__StreamEncoderWriteStatus writeBytes(const FLAC__StreamEncoder*, const FLAC__byte buffer[],
                                          size_t bytes, uint32_t, uint32_t, void* data)
{
    auto* client = static_cast<FlacEncoder::Client*>(data);
    if (client->out->write(reinterpret_cast<const char*>(buffer), qint64(bytes)) == qint64(bytes))
        return FLAC__STREAM_ENCODER_WRITE_STATUS_OK;
    // Kept now: the encoder's own calls may change errno before it returns.
    client->reason = PartFile::systemReason(*client->out, errno);
    return FLAC__STREAM_ENCODER_WRITE_STATUS_FATAL_ERROR;
}

FLAC__StreamEncoderSeekStatus seekTo(const FLAC__StreamEncoder*, FLAC__uint64 offset, void* data)
{
    return static_cast<FlacEncoder::Client*>(data)->out->seek(qint64(offset))
               ? FLAC__STREAM_ENCODER_SEEK_STATUS_OK
               : FLAC__STREAM_ENCODER_SEEK_STATUS_ERROR;
}

FLAC__StreamEncoderTellStatus tellPosition(const FLAC__StreamEncoder*, FLAC__uint64* offset,
                                           void* data)
{
    *offset = FLAC__uint64(static_cast<FlacEncoder::Client*>(data)->out->pos());
    return FLAC__STREAM_ENCODER_TELL_STATUS_OK;
}

bool addComment(FLAC__StreamMetadata* block, const char* name, const QString& value)
{
    if (value.isEmpty())
        return true;
    FLAC__StreamMetadata_VorbisComment_Entry entry;
    const QByteArray utf8 = value.toUtf8();
    if (!FLAC__metadata_object_vorbiscomment_entry_from_name_value_pair(&entry, name,
                                                                        utf8.constData()))
        return false;
    // Appended without a copy: the block owns the entry from here.
    return FLAC__metadata_object_vorbiscomment_append_comment(block, entry, false);
}

} // namespace

FlacEncoder::~FlacEncoder()
{
    if (m_encoder)
        FLAC__stream_encoder_delete(m_encoder);
    for (FLAC__StreamMetadata* block : m_metadata) {
        if (block)
            FLAC__metadata_object_delete(block);
    }
}

QString FlacEncoder::encoderError() const
{
    if (!m_client.reason.isEmpty())
        return m_client.reason;
    if (!m_encoder)
        return {};
    return tr("the FLAC encoder stopped (%1)")
        .arg(QString::fromLatin1(FLAC__stream_encoder_get_resolved_state_string(m_encoder)));
}

QString FlacEncoder::begin(QFile& out, qint64 pcmBytes, const TrackTags& tags)
{
    m_client.out = &out;
    m_encoder = FLAC__stream_encoder_new();
    m_metadata[0] = FLAC__metadata_object_new(FLAC__METADATA_TYPE_VORBIS_COMMENT);
    m_metadata[1] = FLAC__metadata_object_new(FLAC__METADATA_TYPE_PADDING);
    if (!m_encoder || !m_metadata[0] || !m_metadata[1])
        return tr("not enough memory for the FLAC encoder");
    m_metadata[1]->length = 1024;

    const bool tagged =
        addComment(m_metadata[0], "TITLE", tags.title) &&
        addComment(m_metadata[0], "ARTIST", tags.performer) &&
        addComment(m_metadata[0], "ALBUM", tags.album) &&
        addComment(m_metadata[0], "ALBUMARTIST", tags.albumArtist) &&
        addComment(m_metadata[0], "COMPOSER", tags.composer) &&
        addComment(m_metadata[0], "TRACKNUMBER",
                   tags.trackNumber > 0 ? QString::number(tags.trackNumber) : QString()) &&
        addComment(m_metadata[0], "TRACKTOTAL",
                   tags.trackTotal > 0 ? QString::number(tags.trackTotal) : QString()) &&
        addComment(m_metadata[0], "ISRC", tags.isrc) &&
        addComment(m_metadata[0], "BARCODE", tags.barcode);
    if (!tagged)
        return tr("not enough memory for the FLAC tags");

    const bool set =
        FLAC__stream_encoder_set_channels(m_encoder, 2) &&
        FLAC__stream_encoder_set_bits_per_sample(m_encoder, 16) &&
        FLAC__stream_encoder_set_sample_rate(m_encoder, 44100) &&
        FLAC__stream_encoder_set_compression_level(m_encoder, 5) &&
        FLAC__stream_encoder_set_total_samples_estimate(m_encoder, FLAC__uint64(pcmBytes / 4)) &&
        FLAC__stream_encoder_set_metadata(m_encoder, m_metadata, 2);
    if (!set)
        return encoderError();
    if (FLAC__stream_encoder_init_stream(m_encoder, writeBytes, seekTo, tellPosition, nullptr,
                                         &m_client) != FLAC__STREAM_ENCODER_INIT_STATUS_OK)
        return encoderError();
    return {};
}

QString FlacEncoder::encode(const char* pcm, qint64 size)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(pcm);
    const std::size_t count = std::size_t(size / 2);
    m_samples.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        m_samples[i] = std::int16_t(std::uint16_t(bytes[2 * i] | (bytes[2 * i + 1] << 8)));
    if (!FLAC__stream_encoder_process_interleaved(m_encoder, m_samples.data(),
                                                  unsigned(count / 2))) {
        return encoderError();
    }
    return {};
}

QString FlacEncoder::finish()
{
    if (!FLAC__stream_encoder_finish(m_encoder)) {
        return encoderError();
    }
    return {};
}
