#include "analysis/LoudnessAnalyzer.h"

#include "ddp/DiscImage.h"

LoudnessAnalyzer::LoudnessAnalyzer(QObject* parent) : QObject(parent), m_poll(this)
{
    qRegisterMetaType<DiscLoudness>();
    m_poll.setInterval(100);
    connect(&m_poll, &QTimer::timeout, this, &LoudnessAnalyzer::poll);
}

LoudnessAnalyzer::~LoudnessAnalyzer()
{
    cancel();
}

void LoudnessAnalyzer::start(std::shared_ptr<const DiscImage> image,
                             std::vector<AnalysisPart> parts)
{
    cancel();
    m_cancel = false;
    m_ended = false;
    m_done = 0;
    m_total = 0;
    m_reported = -1;
    m_thread = std::thread([this, image = std::move(image), parts = std::move(parts)] {
        AnalysisOptions options;
        options.background = true;
        options.progress = [this](qint64 done, qint64 total) {
            m_total = total;
            m_done = done;
        };
        bool cancelled = false;
        DiscLoudness result = analyzeLoudness(*image, parts, m_cancel, options, &cancelled);
        if (cancelled)
            return;
        {
            const std::lock_guard<std::mutex> lock(m_resultMutex);
            m_result = std::move(result);
        }
        m_ended = true;
    });
    m_poll.start();
}

void LoudnessAnalyzer::cancel()
{
    m_poll.stop();
    if (!m_thread.joinable())
        return;
    m_cancel = true;
    m_thread.join();
}

void LoudnessAnalyzer::poll()
{
    if (!m_thread.joinable()) {
        m_poll.stop();
        return;
    }
    if (m_ended) {
        m_poll.stop();
        m_thread.join();
        DiscLoudness result;
        {
            const std::lock_guard<std::mutex> lock(m_resultMutex);
            result = std::move(m_result);
            m_result = {};
        }
        emit finished(result);
        return;
    }
    const qint64 done = m_done;
    if (done != m_reported) {
        m_reported = done;
        emit progressed(done, m_total);
    }
}
