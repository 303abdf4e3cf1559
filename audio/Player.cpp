#include "audio/Player.h"

#include <exception>

namespace Audio {

void Player::notifyPlaying(bool playing)
{
    if (m_source)
        m_source->setPlaying(playing);
}

int Player::firstTrackOffset() const
{
    return m_source ? static_cast<int>(m_source->firstTrackNumber()) : 1;
}

std::uint32_t Player::segmentStart(int e) const
{
    return isValidEntry(e) ? m_segments[static_cast<std::size_t>(e)].first : 0;
}

std::uint32_t Player::currentTrackStart() const
{
    return segmentStart(entryIndex());
}

std::uint32_t Player::currentTrackLength() const
{
    const int e = entryIndex();
    if (!isValidEntry(e))
        return 0;
    const TrackSegment& segment = m_segments[static_cast<std::size_t>(e)];
    return segment.second > segment.first ? segment.second - segment.first : 0;
}

void Player::play()
{
    if (!m_source)
        return;
    m_streaming.play();
    notifyPlaying(true);
}

void Player::stop()
{
    if (!m_source)
        return;
    m_streaming.stop();
    notifyPlaying(false);
}

void Player::pause()
{
    m_streaming.pause();
    notifyPlaying(false);
}

void Player::selectNextTrack()
{
    if (!m_source)
        return;
    bool free = true;
    if (!m_nextGuard.compare_exchange_strong(free, false))
        return; // a jump is pending: this press falls into its fade
    const int e = entryIndex() + 1;
    m_currentTrackNumber.fetch_add(1);
    if (isValidEntry(e)) {
        const bool queued = m_streaming.setCurrentSampleInFileAndFadeOutFadeIn(
            static_cast<std::int32_t>(segmentStart(e)), [this] {
                m_entryIndex.fetch_add(1);
                m_nextGuard.store(true);
            });
        if (!queued) {
            m_currentTrackNumber.fetch_sub(1);
            m_nextGuard.store(true);
        }
        return;
    }
    // Past the last track: back to the first one, stopped.
    notifyPlaying(false);
    m_entryIndex.store(2);
    m_currentTrackNumber.store(2 - firstTrackOffset());
    const auto start = static_cast<std::int32_t>(segmentStart(2));
    // The guard comes free only once stopped: during the fade-out the
    // position still counts the last track against the first track's
    // length, and the display's end-of-track check must not skip again.
    // This runs on the audio thread, right after the stop: it must not queue
    // a fade itself (the GUI thread is the queue's only producer), and a play
    // pressed during the fade-out is already queued behind the stop.
    const bool queued = m_streaming.stop([this, start] {
        m_streaming.setCurrentSampleInFile(start);
        m_nextGuard.store(true);
    });
    if (!queued)
        m_nextGuard.store(true);
}

void Player::onTrackEnded()
{
    // A jump or fade under way sets the position itself, and the display's
    // float may round a position just short of the end up to it: the next
    // tick looks again.
    if (m_streaming.fadeState() != Idle || m_streaming.hasQueuedActions())
        return;
    if (2ull * m_streaming.samplesPlayed() < currentTrackLength())
        return;
    if (!runOnIntoNextTrack())
        selectNextTrack();
}

// At a track's natural end the audio is already in the next track, which
// starts where this one ends: moving the bookkeeping there, instead of a
// faded jump back to its start, keeps a gapless transition as on the disc.
bool Player::runOnIntoNextTrack()
{
    const int e = entryIndex();
    if (!m_source || !isPlaying() || !isValidEntry(e) || !isValidEntry(e + 1))
        return false;
    const TrackSegment& current = m_segments[static_cast<std::size_t>(e)];
    const TrackSegment& next = m_segments[static_cast<std::size_t>(e + 1)];
    if (next.first != current.second || current.second <= current.first ||
        m_streaming.currentSampleInFile() != current.first)
        return false;
    bool free = true;
    if (!m_nextGuard.compare_exchange_strong(free, false))
        return false;
    const bool moved = m_streaming.moveOriginForward(next.first, current.second - current.first);
    if (moved) {
        m_entryIndex.fetch_add(1);
        m_currentTrackNumber.fetch_add(1);
    }
    m_nextGuard.store(true);
    return moved;
}

void Player::selectPreviousTrack()
{
    if (!m_source)
        return;
    bool free = true;
    if (!m_previousGuard.compare_exchange_strong(free, false))
        return;
    int e = entryIndex() - 1;
    if (e < firstTrackOffset()) {
        m_currentTrackNumber.store(0);
        stop();
        m_previousGuard.store(true);
        return;
    }
    m_currentTrackNumber.fetch_sub(1);
    int steps = 1;
    const std::vector<PqEntry>& entries = m_source->entries();
    for (;;) {
        const int index = entryIndexNumber(entries, e);
        if (index == 1)
            break;
        if (index == -1) {
            m_currentTrackNumber.store(1);
            stop();
            m_previousGuard.store(true);
            return;
        }
        ++steps;
        --e;
        m_currentTrackNumber.fetch_sub(1);
    }
    const bool queued = m_streaming.setCurrentSampleInFileAndFadeOutFadeIn(
        static_cast<std::int32_t>(segmentStart(e)), [this, steps] {
            m_entryIndex.fetch_sub(steps);
            m_previousGuard.store(true);
        });
    if (!queued) {
        m_currentTrackNumber.fetch_add(steps);
        m_previousGuard.store(true);
    }
}

void Player::selectTrack(std::int32_t trackNumber)
{
    if (!m_source)
        return;
    const int e = firstTrackOffset() + trackNumber;
    if (!isValidEntry(e))
        return;
    const std::int32_t previousNumber = m_currentTrackNumber.exchange(trackNumber);
    const auto start = static_cast<std::int32_t>(segmentStart(e));
    if (isPlaying()) {
        if (!m_streaming.setCurrentSampleInFileAndFadeOutFadeIn(
                start, [this, e] { m_entryIndex.store(e); }))
            m_currentTrackNumber.store(previousNumber);
        return;
    }
    m_streaming.setCurrentSampleInFile(start);
    m_entryIndex.store(e);
    play();
}

int Player::seek(double fraction)
{
    return m_streaming.seek(fraction, static_cast<std::int32_t>(currentTrackLength()));
}

void Player::setTrackSource(std::shared_ptr<IDescListProvider> source)
{
    m_source = std::move(source);
    m_segments = m_source ? buildTrackSegments(m_source->entries()) : std::vector<TrackSegment>{};
}

void Player::load(const QString& imagePath, std::function<void()> endOfFile)
{
    load(DiscImage::openFile(imagePath), std::move(endOfFile));
}

void Player::load(std::shared_ptr<const DiscImage> image, std::function<void()> endOfFile)
{
    if (!m_source)
        return;
    bool firstRowPause = false;
    try {
        firstRowPause = m_source->isFirstRowPause();
    } catch (const std::exception&) {
        // An empty index list: no pause row.
    }
    m_source->setFirstTrackNumber(firstRowPause ? 1 : 2);
    m_entryIndex.store(2);
    m_currentTrackNumber.store(2 - firstTrackOffset());
    m_nextGuard.store(true);
    m_previousGuard.store(true);
    m_streaming.openImage(std::move(image), std::move(endOfFile));
    m_streaming.setCurrentSampleInFile(static_cast<std::int32_t>(segmentStart(2)));
}

bool Player::initialize(const std::string& deviceName)
{
    m_lastSetup = m_streaming.initialize(deviceName);
    return m_lastSetup.kind == 0;
}

bool Player::rescan(const std::string& deviceName)
{
    m_lastSetup = m_streaming.rescan(deviceName);
    return m_lastSetup.kind == 0;
}

LoadResult Player::lastError() const
{
    if (m_lastSetup.kind == 0)
        return LoadResult{ErrorKind::NoError, {}};
    return LoadResult{static_cast<ErrorKind>(m_lastSetup.kind), m_lastSetup.message};
}

} // namespace Audio
