#pragma once

#include "ddp/ErrorKind.h"

#include <QString>

#include <string>

// The error dialog's title and rich text for each kind. Kept word for word:
// users and support know these texts. Kind 12 (no error) and anything above
// have no title and an empty text.
QString errorTitle(ErrorKind kind);
QString errorText(ErrorKind kind, const std::string& message = {});

// The same text as plain words, for the command line.
QString plainErrorText(ErrorKind kind, const std::string& message = {});
