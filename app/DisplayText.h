#pragma once

#include <QString>

#include <cstdint>
#include <vector>

struct PqEntry;

// The texts of the time and volume read-outs.

// "-6.0 dB" for a volume slider value (gain = value × 0.0001); silence reads
// as the infinity sign rather than "-144.0 dB".
QString volumeDecibelText(int sliderValue);

// Whole seconds of a byte count of the image (176400 bytes a second).
int wholeSecondsOfBytes(double bytes);

// The seconds shown for a point of the disc, counted like the table's
// "CD-Time" column: from the first audible index, so the lead-in pause reads
// negative. `bytePosition` is an offset in the image.
int cdSecondsAt(const std::vector<PqEntry>& entries, double bytePosition);

// "MM:SS", with a leading "-" for negative values.
QString signedTimeText(int seconds);

// Time still to go, always with a leading "-" ("-03:12", "-00:00"), so that
// it cannot be taken for time gone by.
QString remainingTimeText(int seconds);
