#include "audio/DiskStreaming.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

namespace Audio {

namespace {

template <typename Call> StreamingEngine::Error guarded(StreamingEngine& engine, Call&& call)
{
    try {
        return call();
    } catch (const RtAudioError& error) {
        return classifyOpenFailure(engine.currentDeviceInfo(), error.getMessage());
    } catch (const std::exception& error) {
        return StreamingEngine::Error{3, error.what()};
    }
}

} // namespace

DiskStreaming::DiskStreaming() : m_reader(m_buffer), m_adopted(new float[kPreloadChunkSamples]) {}

DiskStreaming::~DiskStreaming()
{
    // The stream must not call process while the members go away.
    try {
        m_engine.closeStream();
    } catch (...) {
    }
}

StreamingEngine::Error DiskStreaming::initialize(const std::string& deviceName)
{
    return guarded(m_engine, [&] {
        return m_engine.initialize(deviceName, [this](float* output, unsigned int frameCount) {
            return process(output, frameCount);
        });
    });
}

StreamingEngine::Error DiskStreaming::rescan(const std::string& deviceName)
{
    return guarded(m_engine, [&] { return m_engine.rescan(deviceName); });
}

void DiskStreaming::closeStream()
{
    guarded(m_engine, [&] {
        m_engine.closeStream();
        return StreamingEngine::success();
    });
}

void DiskStreaming::openFile(const QString& path, std::function<void()> endOfFile)
{
    m_reader.openFile(path, std::move(endOfFile));
    m_position.samplePosition.store(0);
}

void DiskStreaming::openImage(std::shared_ptr<const DiscImage> image,
                              std::function<void()> endOfFile)
{
    m_reader.openImage(std::move(image), std::move(endOfFile));
    m_position.samplePosition.store(0);
}

void DiskStreaming::play()
{
    m_meterResetRequested.store(true, std::memory_order_release);
    // With actions still queued (a pause or a jump whose fade-out runs), a
    // restart from silence would leave them behind, to strike at some later
    // fade, and a jump's completion would never come. Queue the play after
    // them instead, so that everything happens in the order asked.
    if (!m_fade.actions.empty()) {
        // When even the play cannot be queued, the fade under way still
        // drains the queue; the state is set here in any case.
        requestFade(FadeAction::Play, true, -1, 0, {});
        m_position.state.store(TransportState::Playing, std::memory_order_release);
        return;
    }
    // fadeState before state: whoever sees "playing" sees the fade-in too.
    m_fade.fadeState.store(StartingFadeIn, std::memory_order_release);
    m_position.state.store(TransportState::Playing, std::memory_order_release);
}

void DiskStreaming::pause()
{
    requestFade(FadeAction::Pause, false, -1, 0, {});
}

void DiskStreaming::stop()
{
    if (isPlaying())
        requestFade(FadeAction::StopNow, false, -1, 0, {});
    else
        stopNow();
}

bool DiskStreaming::stop(std::function<void()> done)
{
    if (isPlaying())
        return requestFade(FadeAction::StopNow, false, -1, 0, std::move(done));
    stopNow();
    done();
    return true;
}

void DiskStreaming::setCurrentSampleInFile(std::int32_t offset)
{
    const auto start = static_cast<std::uint32_t>(std::max<std::int32_t>(offset, 0));
    m_currentSampleInFile.store(start, std::memory_order_release);
    m_position.samplePosition.store(0);
    requestPrime(start);
    m_meterResetRequested.store(true, std::memory_order_release);
}

bool DiskStreaming::moveOriginForward(std::uint32_t nextStart, std::uint32_t length)
{
    // Only the GUI thread queues fades, so neither can start behind this check.
    if (m_fade.fadeState.load(std::memory_order_acquire) != Idle || !m_fade.actions.empty())
        return false;
    if (!m_position.samplePosition.shift(length / 2))
        return false;
    m_currentSampleInFile.store(nextStart, std::memory_order_release);
    return true;
}

bool DiskStreaming::setCurrentSampleInFileAndFadeOutFadeIn(std::int32_t offset,
                                                           std::function<void()> done)
{
    const auto start = static_cast<std::uint32_t>(std::max<std::int32_t>(offset, 0));
    const std::uint32_t previous = m_currentSampleInFile.exchange(start, std::memory_order_acq_rel);
    if (isPlaying()) {
        const int slot = m_reader.preload(start);
        if (slot >= 0 && requestFade(FadeAction::Jump, true, slot, 0, std::move(done)))
            return true;
        // Refused (no stream takes the queue): nothing moves.
        m_currentSampleInFile.store(previous, std::memory_order_release);
        return false;
    }
    requestPrime(start);
    m_position.samplePosition.store(0);
    if (done)
        done();
    return true;
}

int DiskStreaming::seek(double fraction, std::int32_t length)
{
    if (fadeState() != Idle)
        return 1;
    fraction = std::clamp(fraction, 0.0, 1.0);
    const std::int64_t span = std::max<std::int32_t>(length, 0);
    const std::int64_t target =
        std::clamp<std::int64_t>(static_cast<std::int64_t>(span * fraction), 0, span);
    const auto samples = static_cast<std::uint32_t>(target / 2);
    const std::uint32_t from = currentSampleInFile() + static_cast<std::uint32_t>(target);
    if (isPlaying()) {
        // Only a jump that is on its way may move the displayed position.
        const int slot = m_reader.preload(from);
        if (slot < 0 ||
            !requestFade(FadeAction::SeekJump, true, slot, static_cast<std::uint32_t>(target), {}))
            return 1;
        m_position.samplePosition.store(samples);
    } else {
        m_position.samplePosition.store(samples);
        // What the reader holds from the old place (up to four chunks)
        // would be heard first on resuming: drop it and read from here.
        requestPrime(from);
    }
    return 0;
}

void DiskStreaming::setVolume(double gain)
{
    m_volumeTarget.store(static_cast<float>(gain), std::memory_order_relaxed);
}

float DiskStreaming::position() const
{
    return static_cast<float>(m_position.samplePosition.load()) * 2.0f;
}

void DiskStreaming::resetPeaks()
{
    m_peakResetRequested.store(true, std::memory_order_release);
}

bool DiskStreaming::requestFade(FadeAction::Kind kind, bool fadeInAfter, int preloadSlot,
                                std::uint32_t target, std::function<void()> done)
{
    const bool queued = m_fade.actions.push([&](FadeAction& action) {
        action.kind = kind;
        action.preloadSlot = preloadSlot;
        action.target = target;
        action.fadeInAfter = fadeInAfter;
        action.done = std::move(done);
    });
    if (!queued) {
        // Only when the audio thread has stopped taking actions (no stream).
        if (preloadSlot >= 0)
            m_reader.preloadSlot(preloadSlot).inUse.store(false, std::memory_order_release);
        return false;
    }
    m_fade.fadeInAfter.store(fadeInAfter, std::memory_order_release);
    // A fade already under way goes on from its present gain.
    m_fade.fadeState.store(FadingOut, std::memory_order_release);
    return true;
}

void DiskStreaming::stopNow()
{
    m_position.state.store(TransportState::Stopped, std::memory_order_release);
    m_position.samplePosition.store(0);
    requestPrime(currentSampleInFile());
    m_meterResetRequested.store(true, std::memory_order_release);
}

void DiskStreaming::requestPrime(std::uint32_t offset)
{
    // A new epoch: the audio thread drops what it plays at its next look,
    // and the reader refills every slot from the new offset.
    m_reader.postRead(offset, true);
    m_reader.wake();
}

// ---- audio thread ----

void DiskStreaming::applyRequests()
{
    // Actions queued while no fade runs would wait for some later fade;
    // run a fade-out for them now.
    std::uint32_t idle = Idle;
    if (!m_fade.actions.empty())
        m_fade.fadeState.compare_exchange_strong(idle, FadingOut, std::memory_order_acq_rel);
    if (m_meterResetRequested.load(std::memory_order_relaxed) &&
        m_meterResetRequested.exchange(false, std::memory_order_acq_rel))
        m_meter.reset();
    if (m_peakResetRequested.load(std::memory_order_relaxed) &&
        m_peakResetRequested.exchange(false, std::memory_order_acq_rel))
        m_meter.resetPeaks();
    followReadRequest();
}

void DiskStreaming::followReadRequest()
{
    const std::uint32_t epoch = m_reader.readRequest().epoch;
    if (epoch == m_playEpoch)
        return;
    releaseCurrent();
    m_playEpoch = epoch;
    m_wantIndex = 0;
}

void DiskStreaming::releaseCurrent()
{
    if (m_currentSlot >= 0) {
        m_buffer.chunkSlots[static_cast<std::size_t>(m_currentSlot)].state.store(
            ChunkSlot::Empty, std::memory_order_release);
        m_currentSlot = -1;
        m_reader.wake();
    }
    m_currentData = nullptr;
    m_currentSize = 0;
    m_position.readIndex = 0;
}

void DiskStreaming::switchChunk()
{
    releaseCurrent();
    std::uint32_t expected = ChunkSlot::word(m_playEpoch, m_wantIndex, ChunkSlot::Ready);
    const std::uint32_t taken = ChunkSlot::word(m_playEpoch, m_wantIndex, ChunkSlot::Playing);
    for (int i = 0; i < DoubleBuffer::kSlotCount; ++i) {
        ChunkSlot& slot = m_buffer.chunkSlots[static_cast<std::size_t>(i)];
        std::uint32_t word = expected;
        if (slot.state.compare_exchange_strong(word, taken, std::memory_order_acquire,
                                               std::memory_order_relaxed)) {
            m_currentSlot = i;
            m_currentData = slot.samples.get();
            m_currentSize = slot.size;
            ++m_wantIndex;
            return;
        }
    }
}

void DiskStreaming::adoptPreload(int preloadSlot)
{
    releaseCurrent();
    PreloadSlot& preload = m_reader.preloadSlot(preloadSlot);
    std::memcpy(m_adopted.get(), preload.samples.get(), preload.size * sizeof(float));
    m_currentData = m_adopted.get();
    m_currentSize = preload.size;
    // Read on right behind the preload, discarding everything read before.
    m_playEpoch = m_reader.postRead(preload.offset + kPreloadChunkBytes, true);
    m_wantIndex = 0;
    preload.inUse.store(false, std::memory_order_release);
}

bool DiskStreaming::runActions()
{
    bool fadeIn = m_fade.fadeInAfter.load(std::memory_order_acquire);
    while (m_fade.actions.pop([this, &fadeIn](FadeAction& action) {
        fadeIn = action.fadeInAfter;
        switch (action.kind) {
        case FadeAction::Pause:
            m_position.state.store(TransportState::Paused, std::memory_order_release);
            break;
        case FadeAction::Play:
            m_position.state.store(TransportState::Playing, std::memory_order_release);
            break;
        case FadeAction::StopNow:
            stopNow();
            if (action.done)
                action.done();
            break;
        case FadeAction::Jump:
            adoptPreload(action.preloadSlot);
            m_position.samplePosition.store(0);
            if (action.done)
                action.done();
            m_reader.wake();
            break;
        case FadeAction::SeekJump:
            m_position.samplePosition.store(action.target / 2);
            adoptPreload(action.preloadSlot);
            m_reader.wake();
            break;
        }
    })) {
    }
    return fadeIn;
}

bool DiskStreaming::stepFade()
{
    std::uint32_t state = m_fade.fadeState.load(std::memory_order_acquire);
    double& gain = m_fade.gain;
    switch (state) {
    case FadingOut:
        if (gain > 0.0)
            gain = static_cast<float>(gain - kFadeStep);
        else {
            gain = 0.0;
            m_fade.fadeState.compare_exchange_strong(state, RunningActions,
                                                     std::memory_order_acq_rel);
        }
        return false;
    case RunningActions: {
        const bool fadeIn = runActions();
        if (m_fade.fadeState.compare_exchange_strong(state, fadeIn ? FadingIn : Idle,
                                                     std::memory_order_acq_rel) &&
            !fadeIn)
            gain = 1.0;
        return true;
    }
    case StartingFadeIn:
        gain = 0.0;
        if (!m_fade.fadeState.compare_exchange_strong(state, FadingIn, std::memory_order_acq_rel))
            return false;
        state = FadingIn;
        [[fallthrough]];
    case FadingIn:
        if (gain >= 1.0) {
            gain = 1.0;
            m_fade.fadeState.compare_exchange_strong(state, Idle, std::memory_order_acq_rel);
        } else {
            gain = static_cast<float>(gain + kFadeStep);
        }
        return false;
    default:
        return false;
    }
}

int DiskStreaming::process(float* output, unsigned int frameCount)
{
    m_framesProcessed.store(m_framesProcessed.load(std::memory_order_relaxed) + frameCount,
                            std::memory_order_relaxed);
    // The state before the read request: a move made while paused is
    // posted before the play that follows it, so whoever sees "playing"
    // here also sees the move's epoch below and never plays on the chunk
    // from before it.
    const bool playing = isPlaying();
    applyRequests();
    if (m_currentData == nullptr || m_position.readIndex + 2 > m_currentSize)
        switchChunk();
    if (frameCount == 0)
        return 0;
    if (m_currentData == nullptr || m_currentSize == 0 || m_currentSize % 2 != 0) {
        advanceSilently(frameCount);
        return 0;
    }
    render(output, frameCount, playing);
    return 0;
}

void DiskStreaming::advanceSilently(unsigned int frameCount)
{
    const float target = m_volumeTarget.load(std::memory_order_relaxed);
    float volume = m_volume.load(std::memory_order_relaxed);
    for (unsigned int f = 0; f < frameCount; ++f) {
        if (std::abs(target - volume) > kVolumeGlide)
            volume += (target - volume) * kVolumeGlide;
        else
            volume = target;
        if (stepFade())
            followReadRequest();
    }
    m_volume.store(volume, std::memory_order_relaxed);
}

void DiskStreaming::render(float* output, unsigned int frameCount, bool playing)
{
    const float target = m_volumeTarget.load(std::memory_order_relaxed);
    float volume = m_volume.load(std::memory_order_relaxed);
    LevelMeter::State meter = m_meter.state();
    SamplePosition::Snapshot positionAtStart = m_position.samplePosition.snapshot();
    std::uint32_t position = SamplePosition::valueOf(positionAtStart);
    bool missing = false;

    auto publishPosition = [&] {
        positionAtStart = m_position.samplePosition.addSince(positionAtStart, position);
        position = SamplePosition::valueOf(positionAtStart);
    };

    unsigned int f = 0;
    while (f < frameCount) {
        if (playing && m_currentData != nullptr && m_position.readIndex + 2 > m_currentSize) {
            // Only a full chunk promises a successor; after a short one the
            // image has ended.
            const bool full = m_currentSize >= kRefillChunkSamples;
            switchChunk();
            if (m_currentData == nullptr && full)
                missing = true;
        }
        const bool haveData =
            playing && m_currentData != nullptr && m_position.readIndex + 2 <= m_currentSize;
        const std::uint32_t fadeState = m_fade.fadeState.load(std::memory_order_acquire);

        if (fadeState == Idle && volume == target) {
            // Steady state: a run up to the end of the chunk or the buffer.
            unsigned int run = frameCount - f;
            if (haveData) {
                run = std::min<unsigned int>(
                    run, static_cast<unsigned int>((m_currentSize - m_position.readIndex) / 2));
                const float* in = m_currentData + m_position.readIndex;
                float* out = output + 2 * f;
                // The meter's state in plain locals, so that it stays in
                // registers: the same arithmetic as LevelMeter::State::feed.
                float meanSquareLeft = meter.meanSquareLeft;
                float meanSquareRight = meter.meanSquareRight;
                float peakLeft = meter.peakHoldLeft;
                float peakRight = meter.peakHoldRight;
                for (unsigned int k = 0; k < run; ++k) {
                    const float left = in[2 * k] * volume;
                    const float right = in[2 * k + 1] * volume;
                    out[2 * k] = left;
                    out[2 * k + 1] = right;
                    const float meteredLeft = left * volume;
                    const float meteredRight = right * volume;
                    peakLeft = meteredLeft > peakLeft ? meteredLeft : peakLeft;
                    peakRight = meteredRight > peakRight ? meteredRight : peakRight;
                    meanSquareLeft = LevelMeter::kDecay * meanSquareLeft +
                                     LevelMeter::kWeight * (meteredLeft * meteredLeft);
                    meanSquareRight = LevelMeter::kDecay * meanSquareRight +
                                      LevelMeter::kWeight * (meteredRight * meteredRight);
                }
                meter.meanSquareLeft = meanSquareLeft;
                meter.meanSquareRight = meanSquareRight;
                meter.peakHoldLeft = peakLeft;
                meter.peakHoldRight = peakRight;
                m_position.readIndex += 2 * run;
                position += 2 * run;
            } else {
                std::memset(output + 2 * f, 0, sizeof(float) * 2 * run);
                for (unsigned int k = 0; k < run; ++k) {
                    meter.feed(0.0f, 0, volume);
                    meter.feed(0.0f, 1, volume);
                }
            }
            f += run;
            continue;
        }

        // One frame with the glide and the fade.
        if (std::abs(target - volume) > kVolumeGlide)
            volume += (target - volume) * kVolumeGlide;
        else
            volume = target;
        // A play that came during this callback starts its fade-in with the
        // audio, not in silence.
        if (!playing && isPlaying()) {
            playing = true;
            // It may have come with a move this callback has not followed.
            followReadRequest();
            if (m_currentData == nullptr || m_position.readIndex + 2 > m_currentSize)
                switchChunk();
        }
        // Actions may set the position themselves: what this callback
        // counted so far must be in place before they run.
        if (fadeState == RunningActions)
            publishPosition();
        if (stepFade()) {
            // The actions may have moved the position, the chunk or the state.
            positionAtStart = m_position.samplePosition.snapshot();
            position = SamplePosition::valueOf(positionAtStart);
            followReadRequest();
            playing = isPlaying();
            if (playing && (m_currentData == nullptr || m_position.readIndex + 2 > m_currentSize))
                switchChunk();
        }
        const float gain = std::clamp(static_cast<float>(m_fade.gain), 0.0f, 1.0f);
        float left = 0.0f;
        float right = 0.0f;
        if (playing && m_currentData != nullptr && m_position.readIndex + 2 <= m_currentSize) {
            left = gain * (m_currentData[m_position.readIndex] * volume);
            right = gain * (m_currentData[m_position.readIndex + 1] * volume);
            m_position.readIndex += 2;
            position += 2;
        }
        output[2 * f] = left;
        output[2 * f + 1] = right;
        meter.feed(left, 0, volume);
        meter.feed(right, 1, volume);
        ++f;
    }

    if (missing)
        m_underruns.fetch_add(1, std::memory_order_relaxed);
    publishPosition();
    m_volume.store(volume, std::memory_order_relaxed);
    m_meter.setState(meter);
}

} // namespace Audio
