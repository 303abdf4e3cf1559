#pragma once

#include "analysis/LoudnessResult.h"
#include "verify/DiscCheck.h"

#include <QDate>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class DDPModel;
struct VerificationReport;

// One row of the sheet: a track's index, or the lead-out. Times are CD
// frames from the PQ entries, written MM:SS:FF where shown.
struct PqSheetRow
{
    bool leadOut = false;
    int track = 0;
    int index = 0;
    std::optional<std::int64_t> startFrames;    // none: the lead-out's time is no number
    std::optional<std::int64_t> durationFrames; // to the next entry
    std::optional<std::int64_t> pauseFrames;    // index 01 rows: the track's index 00 length
    QString isrc;       // index 01 rows, when the PQ entry holds a valid one
    QString flags;      // "PRE COPY 4CH", the ones set
    QStringList cdText; // index 01 rows: title, performer, songwriter, composer, arranger, message
    std::optional<double> loudnessLufs; // index 01 rows, when analysed; minus infinity for silence
    std::optional<double> truePeakDbtp;

    // The values as the sheet shows them ("02:14:37", "-9.8 LUFS",
    // "-0.3 dBTP"); empty when there is none.
    QString startText() const;
    QString durationText() const;
    QString pauseText() const;
    QString loudnessText() const;
    QString truePeakText() const;
    // Whether the true peak is marked as one to look at.
    bool truePeakNeedsLook() const;
};

// A file of the DDP with its size and MD5 (empty when not computed).
struct PqSheetFile
{
    QString name;
    std::uint64_t size = 0;
    QString md5;
};

// Everything the PQ sheet prints, gathered once; each format renders it.
struct PqSheet
{
    QString albumTitle;
    QString albumPerformer;
    QString upcEan;
    QString ddpLevel;
    QStringList imageFiles;
    int trackCount = 0;
    QString totalTime; // the lead-out's start
    QDate date;
    QString checksums;    // the verification's verdict line, or "Not verified"
    QString discCheck;    // "1 error, 2 warnings", "No errors or warnings"; empty when not checked
    QString discLoudness; // "-9.8 LUFS, LRA 5.1 LU, -0.3 dBTP", empty when not analysed
    std::vector<PqSheetRow> rows;
    std::vector<Finding> findings;
    std::vector<PqSheetFile> files;

    // The header's lines, caption and value, in order; empty values left out.
    QVector<QPair<QString, QString>> headerFields() const;
    static QStringList columnNames();               // the table's header, in order
    QStringList cells(const PqSheetRow& row) const; // one row's cells, in that order
    // The columns some row fills (Track to Flags always).
    std::vector<int> shownColumns() const;
};

// What the sheet prints besides the disc itself: any of it may be absent.
struct PqSheetInputs
{
    const VerificationReport* verification = nullptr;
    const DiscLoudness* loudness = nullptr; // tracks in disc order
    std::vector<PqSheetFile> files;
    QDate date = QDate::currentDate();
};

// The sheet of a loaded disc. Rows run from track 1's first entry to the
// lead-out; entries whose time holds no number are left out.
PqSheet makePqSheet(const DDPModel& model, const PqSheetInputs& inputs);
