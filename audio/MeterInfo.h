#pragma once

#include <QMetaType>

// Linear levels, 1.0 at digital full scale. The layout matches the first four
// fields of LevelMeter so that a reading copies them as one record.
struct MeterInfo
{
    float rmsLeft = 0.0f;
    float rmsRight = 0.0f;
    float peakLeft = 0.0f;
    float peakRight = 0.0f;
};
Q_DECLARE_METATYPE(MeterInfo)
