#pragma once

#include "ddp/ErrorKind.h"

#include <QString>
#include <QStringList>

#include <string>

class DDPModel;
class IDdpFileSource;
class QStandardItemModel;

// The 13 column names of the track table, in logical order: "Type", "Track",
// "Index", "CD-Time", "Duration", "Title", "Performer", "Songwriter",
// "Composer", "Arranger", "Message", "ISRC", "Usertext".
QStringList trackTableHeaderNames();

// Loads a DDP into the track table's item model and a fresh DDPModel:
//   no table -> UnknownError (11); the reader's failures -> 8, 9, 10;
//   a fault while decoding CD-Text -> 11, one while reading PQ entries or
//   building rows -> 10, each with the exception's text as the message;
//   no "D0" packet or its file absent (or not a regular file inside the DDP)
//   -> ImageMissing (7); else NoError.
// The table is cleared first and keeps its 13 header names. On ImageMissing
// the table and the model are filled all the same, so that the disc can be
// seen behind the error; on any other failure the table has no rows and the
// model holds nothing but the file names the map gave, as far as the read
// got (DDPModel::fileNames). Nothing throws.
// Files over their size limit (ReadLimits.h) fail as their kind, with the
// limit named in the message.
//
// Rows: one per PQ entry between the first and the lead-out entries (the
// usual two, or one; see leadOutEntryCount) (a lead-in pause
// under 3 s is hidden), then a row holding only "Total: MM:SS" in "CD-Time".
// Cells without content have no item: "Type", the CD-Text columns of rows
// that are not index 1 (or of a disc without CD-Text), a blank "Usertext".
LoadResult loadDdp(const QString& folder, QStandardItemModel* table, DDPModel& model);
LoadResult loadDdp(const IDdpFileSource& source, QStandardItemModel* table, DDPModel& model);
