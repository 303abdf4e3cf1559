#pragma once

#include <QString>

#include <string>
#include <vector>

class DDPModel;

// One thing about a disc that would stop it being pressed, or is worth a
// look before it is. Ids are stable: scripts and tests match on them.
struct Finding
{
    enum Severity
    {
        Error,   // a plant would reject the master
        Warning, // allowed, but worth a look
        Note,
    };
    std::string id; // "track-too-short", "isrc-invalid", ...
    Severity severity = Note;
    int track = 0; // the track it concerns; 0 for the whole disc
    QString text;  // one plain sentence
};

const char* severityName(Finding::Severity severity); // "error", "warning", "note"

// Checks a loaded disc against the rules a plant applies: track and index
// numbering, times, the 4 s track and 2 s first-pause minimums, the disc's
// length, the image against the lead-out, ISRCs, the UPC/EAN, the CD-Text
// (from the file's own bytes, empty when the disc has none) and the control
// flags. The image rules are left out when the disc has no image: the load
// already says so. Findings come in the order of the rules, then by track.
//
// ISRCs are taken from the entries as the PQ descriptor holds them
// (DDPModel::pqEntries): entries() has each pause's ISRC moved onto the track
// after it, which is how the table shows them, not what the disc says.
std::vector<Finding> checkDisc(const DDPModel& model, const std::string& cdTextBytes);

// How many findings of each severity, as the info line counts them:
// "1 error, 2 warnings"; empty when there are none but notes.
QString findingsSummary(const std::vector<Finding>& findings);
