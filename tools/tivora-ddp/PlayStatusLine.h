#pragma once

#include "audio/MeterInfo.h"

#include <QString>

// "Track 02.01  01:23  peak -3.1 -3.4 dB  rms -14.0 -14.2 dB": the status
// line of `tivora-ddp play`, redrawn in place on a terminal.
QString playStatusLine(const QString& trackText, int indexNumber, double seconds,
                       const MeterInfo& meter);
// 20 log10 of a linear level; -inf shown as "-inf" below 1e-9.
QString decibelText(float level);
