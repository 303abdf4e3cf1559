#pragma once

#include "tools/tivora-ddp/InfoReport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class DiscImage;

// The steps the tivora-ddp commands share: their arguments, their messages,
// and loading a disc the way the player does.

// "usage: LINE" on standard error; returns 2, the usage error's status.
int usageError(const char* line);
// "tivora-ddp COMMAND: MESSAGE" on standard error, control characters
// escaped (the message may quote the disc); returns 1.
int commandFailed(const char* command, const QString& message);
// Bytes on standard output, flushed at once.
void writeOut(const QByteArray& bytes);

// "[--json] PATH" in any order: the path, or nothing for anything else.
struct PathArguments
{
    QString path;
    bool json = false;
};
std::optional<PathArguments> parsePathArguments(const QStringList& args);

// A load's error as its dialog's title, then the loader's own words when it
// has any: "Not a DDP (…)".
QString loadErrorTitle(const LoadResult& result);
// The same with the first sentence of the dialog's text after the title.
QString loadErrorLine(const LoadResult& result);
// Why the image of a loaded disc could not be opened: an archive's own error,
// else the image `imageName` is missing.
QString imageMissing(const LoadResult& imageError, const QString& imageName);

// Loads PATH as the player does, with its image open:
// the image, or nothing with the message for the user in `error`.
std::shared_ptr<const DiscImage> loadDiscAndImage(const QString& path, InfoReport& report,
                                                  QString* error);
