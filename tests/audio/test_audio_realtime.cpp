// Real-time safety: the audio thread does not allocate, lock or read the
// file while playing, seeking and skipping, and thousands of transport
// operations racing the callback leave the position and the output exact.
// Also run under ThreadSanitizer (tools/run-tsan.sh).
#include "AudioTestSupport.h"
#include "FakeDevice.h"
#include "ddp/DdpTestBytes.h"

#include "audio/Player.h"
#include "ddp/DDPModel.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <random>

using namespace Audio;
using namespace audiotest;

// Every allocation and release made on a thread marked for counting.
namespace {
thread_local bool t_counting = false;
std::atomic<long> g_audioThreadAllocations{0};

void* allocate(std::size_t size)
{
    if (t_counting)
        g_audioThreadAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}

void release(void* p) noexcept
{
    if (p && t_counting)
        g_audioThreadAllocations.fetch_add(1, std::memory_order_relaxed);
    std::free(p);
}
} // namespace

// Locks and file reads too, where the test can see them: ThreadSanitizer
// brings its own versions of these, so the TSan build counts allocations only.
#if !defined(__SANITIZE_THREAD__)
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

namespace {
std::atomic<long> g_audioThreadLocks{0};
std::atomic<long> g_audioThreadFileCalls{0};

template <typename Function> Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    if (t_counting)
        g_audioThreadLocks.fetch_add(1, std::memory_order_relaxed);
    return real(mutex);
}

extern "C" ssize_t read(int fd, void* buffer, size_t count)
{
    static const auto real = next<ssize_t (*)(int, void*, size_t)>("read");
    if (t_counting)
        g_audioThreadFileCalls.fetch_add(1, std::memory_order_relaxed);
    return real(fd, buffer, count);
}

extern "C" ssize_t pread(int fd, void* buffer, size_t count, off_t offset)
{
    static const auto real = next<ssize_t (*)(int, void*, size_t, off_t)>("pread");
    if (t_counting)
        g_audioThreadFileCalls.fetch_add(1, std::memory_order_relaxed);
    return real(fd, buffer, count, offset);
}

extern "C" off_t lseek(int fd, off_t offset, int whence)
{
    static const auto real = next<off_t (*)(int, off_t, int)>("lseek");
    if (t_counting)
        g_audioThreadFileCalls.fetch_add(1, std::memory_order_relaxed);
    return real(fd, offset, whence);
}
#define TIVORA_COUNTS_LOCKS 1
#endif

void* operator new(std::size_t size)
{
    return allocate(size);
}
void* operator new[](std::size_t size)
{
    return allocate(size);
}
void operator delete(void* p) noexcept
{
    release(p);
}
void operator delete[](void* p) noexcept
{
    release(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    release(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    release(p);
}

namespace {

constexpr std::uint32_t kCdFrame = 2352;

// Four 2-second tracks after a 2-second pause, with a pre-gap and an index 02.
std::shared_ptr<DDPModel> makeModel()
{
    const std::vector<testbytes::Entry> spec = {
        {"00", 0, 0, 0, 0},  {"01", 0, 0, 0, 0},  {"01", 1, 0, 2, 0}, {"01", 2, 0, 3, 0},
        {"02", 0, 0, 4, 0},  {"02", 1, 0, 4, 40}, {"03", 1, 0, 6, 0}, {"04", 1, 0, 8, 0},
        {"AA", 1, 0, 10, 0}, {"AA", 0, 0, 10, 0},
    };
    std::vector<PqEntry> entries;
    for (const testbytes::Entry& e : spec)
        entries.push_back(PqEntry::fromBytes(testbytes::pqEntry(e)));
    auto model = std::make_shared<DDPModel>();
    model->setEntries(std::move(entries));
    for (std::uint32_t index : {1u, 2u, 0u, 1u, 1u, 1u})
        model->appendIndex(index);
    return model;
}

// Drives the streaming on this thread until the transport has settled.
void settle(Player& player)
{
    for (int i = 0; i < 20 && player.streaming().fadeState() != Idle; ++i)
        drive(player.streaming(), 1024, 1024);
}

} // namespace

class TestAudioRealtime : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_image;

private slots:
    void initTestCase()
    {
        m_image = writeImage(m_dir.path(), 10 * 44100);
        QVERIFY(!m_image.isEmpty());
    }

    void audioThreadNeverAllocates()
    {
        Player player;
        auto model = makeModel();
        player.setTrackSource(model);
        player.load(m_image, {});
        QVERIFY(player.streaming().waitForReader());

        g_audioThreadAllocations = 0;
#ifdef TIVORA_COUNTS_LOCKS
        g_audioThreadLocks = 0;
        g_audioThreadFileCalls = 0;
#endif
        FakeDevice device(player.streaming(), 256, std::chrono::microseconds(500),
                          [](bool on) { t_counting = on; });
        auto wait = [] { QTest::qWait(40); };
        player.play();
        wait();
        QCOMPARE(player.seek(0.5), 0);
        wait();
        player.selectNextTrack();
        QTRY_COMPARE(player.entryIndex(), 3);
        player.selectNextTrack();
        wait();
        player.selectPreviousTrack();
        QTRY_COMPARE(player.entryIndex(), 2);
        player.selectTrack(3);
        wait();
        player.setVolume(0.3);
        player.pause();
        QTRY_VERIFY(player.isPaused());
        player.play();
        wait();
        player.selectTrack(5); // the last track, then past it
        wait();
        player.selectNextTrack();
        QTRY_VERIFY(player.isStopped());
        player.play();
        wait();
        player.stop();
        wait();
        device.stop();

        QVERIFY(device.callbacks() > 100);
        QCOMPARE(g_audioThreadAllocations.load(), 0L);
#ifdef TIVORA_COUNTS_LOCKS
        QCOMPARE(g_audioThreadLocks.load(), 0L);
        QCOMPARE(g_audioThreadFileCalls.load(), 0L);
#endif
    }

    void transportStressEndsExact()
    {
        Player player;
        auto model = makeModel();
        player.setTrackSource(model);
        player.load(m_image, {});
        QVERIFY(player.streaming().waitForReader());

        {
            FakeDevice device(player.streaming(), 256, std::chrono::microseconds(20), [](bool) {});
            std::mt19937 random(20261122);
            std::uniform_int_distribution<int> pick(0, 9);
            std::uniform_real_distribution<double> fraction(-0.2, 1.2);
            const std::function<void()> operations[] = {
                [&] { player.play(); },
                [&] { player.pause(); },
                [&] { player.stop(); },
                [&] { player.selectNextTrack(); },
                [&] { player.selectNextTrack(); },
                [&] { player.selectPreviousTrack(); },
                [&] { player.selectTrack(static_cast<int>(random() % 6)); },
                [&] { player.seek(fraction(random)); },
                [&] { player.setVolume(fraction(random)); },
                [&] {
                    // The display tick: at a track's end playback runs on.
                    if (player.position() >= float(player.currentTrackLength()))
                        player.onTrackEnded();
                    else
                        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
                },
            };
            for (int i = 0; i < 5000; ++i)
                operations[pick(random)]();
            QVERIFY(device.callbacks() > 100);
        }

        // Whatever was left queued runs out; then the transport must still be
        // exact: stop, select a track, play it sample for sample.
        player.setVolume(1.0);
        for (int i = 0; i < 10 && !(player.isStopped() && player.streaming().fadeState() == Idle);
             ++i) {
            player.stop();
            settle(player);
        }
        QVERIFY(player.isStopped());
        QCOMPARE(player.position(), 0.0f);
        drive(player.streaming(), 1024, 10240); // the volume glide settles

        player.selectTrack(2); // entry 4: the pre-gap of track 2
        QCOMPARE(player.entryIndex(), 4);
        std::vector<float> out = drive(player.streaming(), 256, 4096);
        QCOMPARE(player.streaming().currentSampleInFile(), 4 * 75 * kCdFrame);
        QCOMPARE(player.position(), 4096.0f * 4);
        QCOMPARE(checkTail(out, player.streaming(), 3500), QString());

        // Both guards are free again: next and previous each move.
        player.selectNextTrack();
        out = drive(player.streaming(), 256, 4096);
        QCOMPARE(player.entryIndex(), 5);
        QCOMPARE(checkTail(out, player.streaming(), 3000), QString());
        player.selectPreviousTrack();
        out = drive(player.streaming(), 256, 4096);
        QCOMPARE(player.entryIndex(), 2);
        QCOMPARE(checkTail(out, player.streaming(), 3000), QString());
    }
};

QTEST_GUILESS_MAIN(TestAudioRealtime)
#include "test_audio_realtime.moc"
