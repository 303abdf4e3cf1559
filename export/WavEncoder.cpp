#include "export/WavEncoder.h"

#include "export/PartFile.h"
#include "export/WavHeader.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <cstdint>

QString WavEncoder::begin(QFile& out, qint64 pcmBytes, const TrackTags& tags)
{
    Q_UNUSED(tags);
    m_out = &out;
    if (pcmBytes < 0 || pcmBytes > qint64(UINT32_MAX) - 36)
        return QCoreApplication::translate("WavEncoder", "%1 bytes do not fit in a WAV file.")
            .arg(pcmBytes);
    const QByteArray header = wavHeader(static_cast<std::uint32_t>(pcmBytes));
    return out.write(header) == header.size() ? QString() : PartFile::systemReason(out, errno);
}

QString WavEncoder::encode(const char* pcm, qint64 size)
{
    return m_out->write(pcm, size) == size ? QString() : PartFile::systemReason(*m_out, errno);
}
