#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace Audio {

// Single-producer single-consumer ring over preallocated items: no lock and
// no allocation on either side. The producer fills an item in place and then
// publishes it; the consumer uses the item in place and only then hands the
// slot back, so whatever the item owns (a std::function, say) is replaced,
// and thereby destroyed, on the producer's thread when the slot is reused.
template <typename T, std::size_t N> class SpscRing
{
    static_assert(N > 0 && (N & (N - 1)) == 0, "capacity must be a power of two");

public:
    // Producer thread. False (and fill not called) when the ring is full.
    template <typename Fill> bool push(Fill&& fill)
    {
        const std::size_t head = m_head.load(std::memory_order_relaxed);
        if (head - m_tail.load(std::memory_order_acquire) == N)
            return false;
        fill(m_items[head % N]);
        m_head.store(head + 1, std::memory_order_release);
        return true;
    }

    // Consumer thread. False (and use not called) when the ring is empty.
    template <typename Use> bool pop(Use&& use)
    {
        const std::size_t tail = m_tail.load(std::memory_order_relaxed);
        if (tail == m_head.load(std::memory_order_acquire))
            return false;
        use(m_items[tail % N]);
        m_tail.store(tail + 1, std::memory_order_release);
        return true;
    }

    bool empty() const
    {
        return m_tail.load(std::memory_order_acquire) == m_head.load(std::memory_order_acquire);
    }

private:
    std::array<T, N> m_items{};
    std::atomic<std::size_t> m_head{0}; // written by the producer, read by the consumer
    std::atomic<std::size_t> m_tail{0}; // written by the consumer, read by the producer
};

} // namespace Audio
