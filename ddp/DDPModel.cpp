#include "ddp/DDPModel.h"

#include "ddp/CheckedAccess.h"

bool DDPModel::isFirstRowPause() const
{
    return checkedAt(m_indexList, std::size_t{0}) == 0;
}

void DDPModel::setPlaying(bool playing)
{
    m_playing = playing;
    if (m_listener)
        m_listener(playing);
}

void DDPModel::setPlayingListener(std::function<void(bool)> listener)
{
    m_listener = std::move(listener);
}

void DDPModel::setCdText(const CdTextRecord& record)
{
    m_cdText = record;
    m_doubleByte = record.doubleByte;
}
