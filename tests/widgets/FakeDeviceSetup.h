#pragma once

#include "audio/IDeviceSetup.h"

#include <string>
#include <vector>

// One device, "Null Output" at `rate`; each rescan answers as told and is
// recorded by the name asked for.
class FakeDeviceSetup : public Audio::IDeviceSetup
{
    class Infos : public Audio::IAudioDeviceInfos
    {
    public:
        Audio::AudioDeviceInfo current;
        Audio::AudioDeviceInfo currentDeviceInfo() const override { return current; }
        unsigned deviceCount() override { return 1; }
        Audio::AudioDeviceInfo deviceInfo(unsigned) override { return current; }
    };

public:
    Infos infos;
    bool rescanResult = true;
    LoadResult error;
    std::vector<std::string> rescans;

    explicit FakeDeviceSetup(std::uint32_t rate = 44100)
    {
        infos.current.name = "Null Output";
        infos.current.preferredSampleRate = rate;
    }
    bool initialize(const std::string&) override { return true; }
    bool rescan(const std::string& name) override
    {
        rescans.push_back(name);
        return rescanResult;
    }
    void closeStream() override {}
    Audio::IAudioDeviceInfos& audioDeviceInfos() override { return infos; }
    LoadResult lastError() const override { return error; }
};
