#pragma once

#include <QString>

#include <cstddef>

class DDPModel;

// What a FLAC or MP3 file says about its track, from the disc's CD-Text and
// PQ entries. Empty strings and a zero number are left out of the file.
struct TrackTags
{
    QString title;
    QString performer;   // the track's artist
    QString album;       // the album record's title
    QString albumArtist; // the album record's performer
    QString composer;
    int trackNumber = 0;
    int trackTotal = 0;
    QString isrc;
    QString barcode; // UPC/EAN
};

// The tags of the track whose index-1 entry is `entryIndex`. `trackTotal` is
// the number of tracks the export writes.
TrackTags trackTags(const DDPModel& model, std::size_t entryIndex, int trackTotal);
