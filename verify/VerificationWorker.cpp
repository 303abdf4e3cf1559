#include "verify/VerificationWorker.h"

#include "ddp/DDPModel.h"
#include "ddp/DdpFileSource.h"

#include <utility>

VerificationWorker::VerificationWorker(QObject* parent) : QObject(parent), m_job(this)
{
    connect(&m_job, &BackgroundJob::progressed, this, &VerificationWorker::progressed);
    connect(&m_job, &BackgroundJob::finished, this, &VerificationWorker::onFinished);
}

VerificationWorker::~VerificationWorker()
{
    cancel();
}

void VerificationWorker::cancel()
{
    m_job.cancel();
}

void VerificationWorker::start(std::shared_ptr<const IDdpFileSource> source,
                               std::shared_ptr<const DDPModel> model,
                               std::shared_ptr<const DiscImage> image)
{
    m_job.start([this, source = std::move(source), model = std::move(model),
                 image = std::move(image)](JobContext& context) {
        VerificationPlan plan = planVerification(*source, *model, image);
        runVerification(plan, &context.cancelFlag(),
                        [&context](std::uint64_t done, std::uint64_t total) {
                            context.setProgress(done, total);
                        });
        m_runReport = std::move(plan.report);
    });
}

void VerificationWorker::onFinished()
{
    m_report = std::exchange(m_runReport, VerificationReport());
    emit finished();
}
