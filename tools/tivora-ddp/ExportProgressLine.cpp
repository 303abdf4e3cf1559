#include "tools/tivora-ddp/ExportProgressLine.h"

#include <QByteArray>

#include <algorithm>
#include <unistd.h>

namespace {

constexpr int kBarWidth = 30;
constexpr int kNameWidth = 32;
constexpr qint64 kScale = 20000;

} // namespace

ExportProgressLine::ExportProgressLine(std::FILE* stream)
    : m_stream(stream), m_enabled(isatty(fileno(stream)) == 1)
{}

ExportProgressLine::~ExportProgressLine()
{
    finish();
}

void ExportProgressLine::setFile(const QString& name, int ordinal, int count)
{
    m_name = name;
    m_ordinal = ordinal;
    m_count = count;
    m_value = 0;
    draw();
}

void ExportProgressLine::setValue(qint64 value)
{
    m_value = std::clamp<qint64>(value, 0, kScale);
    draw();
}

void ExportProgressLine::finish()
{
    if (m_enabled && m_drawn) {
        std::fputc('\n', m_stream);
        std::fflush(m_stream);
    }
    m_drawn = false;
}

void ExportProgressLine::draw()
{
    if (!m_enabled)
        return;
    const int filled = static_cast<int>(m_value * kBarWidth / kScale);
    const int percent = static_cast<int>(m_value * 100 / kScale);
    QString name = m_name;
    if (name.size() > kNameWidth)
        name = name.left(kNameWidth - 3) + QStringLiteral("...");
    const QString line = QStringLiteral("\r%1/%2 [%3%4] %5% %6")
                             .arg(m_ordinal)
                             .arg(m_count)
                             .arg(QString(filled, QLatin1Char('#')))
                             .arg(QString(kBarWidth - filled, QLatin1Char('.')))
                             .arg(percent, 3)
                             .arg(name.leftJustified(kNameWidth));
    const QByteArray bytes = line.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), m_stream);
    std::fflush(m_stream);
    m_drawn = true;
}
