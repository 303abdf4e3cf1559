#pragma once

#include "analysis/LoudnessAnalysis.h"
#include "jobs/BackgroundJob.h"

#include <QObject>

#include <memory>
#include <vector>

class DiscImage;

// The window's analysis: runs analyzeLoudness on a BackgroundJob with its
// workers at low priority, so the window never waits for it. Its signals
// come from the job's timer on the owner's thread.
//
// A new start() or cancel() stops the running analysis: its workers see the
// flag within one 100 ms step of audio, a few milliseconds, and cancel()
// waits that long for them; nothing of a cancelled run is reported.
class LoudnessAnalyzer : public QObject
{
    Q_OBJECT
public:
    explicit LoudnessAnalyzer(QObject* parent = nullptr);
    ~LoudnessAnalyzer() override;

    void start(std::shared_ptr<const DiscImage> image, std::vector<AnalysisPart> parts);
    void cancel();
    bool isRunning() const { return m_job.isRunning(); }

signals:
    // Of the audio to measure, in whole percent, once per step.
    void progressed(int percent);
    void finished(const DiscLoudness& result);

private:
    void onFinished();

    // Written by the run's thread before its work returns, read by the
    // owner's in onFinished(), after the job has joined that thread.
    DiscLoudness m_result;
    // Last: destroyed first, so that a run still going is stopped before
    // the members it writes go.
    BackgroundJob m_job;
};

Q_DECLARE_METATYPE(DiscLoudness)
