#pragma once

#include "ddp/ErrorKind.h"

#include <QString>

#include <cstdint>
#include <string>

// The error dialog's title and rich text for each kind. Kept word for word:
// users and support know these texts. Kind 12 (no error) and anything above
// have no title and an empty text.
QString errorTitle(ErrorKind kind);
QString errorText(ErrorKind kind, const std::string& message = {});

// The same text as plain words, for the command line.
QString plainErrorText(ErrorKind kind, const std::string& message = {});

// The warning for an audio image shorter than its PQ entries need:
// "The audio image is 1234567 bytes (7.00 s) shorter than the PQ descriptor
// says; the end of the disc is missing."
QString imageShortText(std::uint64_t missingBytes);

struct SkippedStream;
// "Data session DATA.DAT (mode M1) is not audio: not played or exported."
QString skippedStreamText(const SkippedStream& stream);
