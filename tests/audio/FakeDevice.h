#pragma once

#include "audio/DiskStreaming.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace audiotest {

// Calls process() from its own thread the way RtAudio's callback thread
// does, buffer after buffer, until stopped. mark(true) runs on that thread
// before the first buffer and mark(false) after the last (a test marks the
// thread there).
class FakeDevice
{
public:
    template <typename Setup>
    FakeDevice(Audio::DiskStreaming& streaming, unsigned frames, std::chrono::microseconds pause,
               Setup mark)
        : m_buffer(2 * frames)
    {
        m_thread = std::thread([this, &streaming, frames, pause, mark] {
            mark(true);
            while (m_running.load(std::memory_order_acquire)) {
                std::fill(m_buffer.begin(), m_buffer.begin() + frames, 0.0f);
                streaming.process(m_buffer.data(), frames);
                m_callbacks.fetch_add(1, std::memory_order_relaxed);
                if (pause.count() > 0)
                    std::this_thread::sleep_for(pause);
            }
            mark(false);
        });
    }
    ~FakeDevice() { stop(); }

    void stop()
    {
        m_running.store(false, std::memory_order_release);
        if (m_thread.joinable())
            m_thread.join();
    }
    long callbacks() const { return m_callbacks.load(std::memory_order_relaxed); }

private:
    std::vector<float> m_buffer;
    std::atomic<bool> m_running{true};
    std::atomic<long> m_callbacks{0};
    std::thread m_thread;
};

} // namespace audiotest
