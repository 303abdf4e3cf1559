#include "analysis/LoudnessAnalyzer.h"

#include "ddp/DiscImage.h"

#include <utility>

LoudnessAnalyzer::LoudnessAnalyzer(QObject* parent) : QObject(parent), m_job(this)
{
    qRegisterMetaType<DiscLoudness>();
    connect(&m_job, &BackgroundJob::progressed, this, &LoudnessAnalyzer::progressed);
    connect(&m_job, &BackgroundJob::finished, this, &LoudnessAnalyzer::onFinished);
}

LoudnessAnalyzer::~LoudnessAnalyzer()
{
    cancel();
}

void LoudnessAnalyzer::start(std::shared_ptr<const DiscImage> image,
                             std::vector<AnalysisPart> parts)
{
    m_job.start([this, image = std::move(image), parts = std::move(parts)](JobContext& context) {
        AnalysisOptions options;
        options.background = true;
        options.progress = [&context](qint64 done, qint64 total) {
            context.setProgress(std::uint64_t(done), std::uint64_t(total));
        };
        m_result = analyzeLoudness(*image, parts, context.cancelFlag(), options);
    });
}

void LoudnessAnalyzer::cancel()
{
    m_job.cancel();
}

void LoudnessAnalyzer::onFinished()
{
    const DiscLoudness result = std::exchange(m_result, DiscLoudness());
    emit finished(result);
}
