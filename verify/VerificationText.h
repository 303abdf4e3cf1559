#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <vector>

struct VerificationReport;
struct ChecksumVerdict;
struct Finding;

// The info line's verdict: "Checksums OK: 5 of 5 files (CHECKSUM.MD5)",
// "IMAGE.DAT does not match its checksum", "No checksum file", followed by
// the count of findings ("· 2 warnings") when there are any.
QString verdictLine(const VerificationReport& report);
// A verdict's word, as md5sum -c prints it: "OK", "FAILED", "MISSING", ...
QString verdictWord(const ChecksumVerdict& verdict);

// For a person, in md5sum -c's shape: one "NAME: OK" or "NAME: FAILED" line
// a listed file, then the files no checksum lists, then the findings.
QByteArray verificationText(const VerificationReport& report);

// The same for scripts: "checksums" (state, files, verdicts, unlisted) and
// "findings" (id, severity, track, text).
QJsonObject checksumsJson(const VerificationReport& report);
QJsonArray findingsJson(const std::vector<Finding>& findings);
