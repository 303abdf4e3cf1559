#include "verify/VerificationText.h"

#include "verify/Verification.h"

#include <QFile>
#include <QStringList>

namespace {

QString fileName(const std::string& name)
{
    return QFile::decodeName(name.c_str());
}

QString algorithmName(ChecksumAlgorithm algorithm)
{
    return algorithm == ChecksumAlgorithm::Md5 ? QStringLiteral("MD5") : QStringLiteral("CRC-32");
}

QString formatName(ChecksumFile::Format format)
{
    switch (format) {
    case ChecksumFile::Md5Sum:
        return QStringLiteral("md5sum");
    case ChecksumFile::Crc32Ini:
        return QStringLiteral("crc32-ini");
    case ChecksumFile::Unrecognised:
        break;
    }
    return QStringLiteral("unrecognised");
}

QString stateName(VerificationReport::State state)
{
    switch (state) {
    case VerificationReport::Ok:
        return QStringLiteral("ok");
    case VerificationReport::Failed:
        return QStringLiteral("failed");
    case VerificationReport::NoChecksumFile:
        return QStringLiteral("none");
    case VerificationReport::Cancelled:
        break;
    }
    return QStringLiteral("cancelled");
}

// Distinct names, ignoring case, of the verdicts with `status`.
QStringList namesWith(const VerificationReport& report, ChecksumVerdict::Status status)
{
    QStringList names;
    for (const ChecksumVerdict& verdict : report.verdicts)
        if (verdict.status == status &&
            !names.contains(fileName(verdict.name), Qt::CaseInsensitive))
            names << fileName(verdict.name);
    return names;
}

QString checksumLine(const VerificationReport& report)
{
    switch (report.state()) {
    case VerificationReport::Cancelled:
        return QStringLiteral("Checksums not verified");
    case VerificationReport::NoChecksumFile: {
        QStringList unknown;
        for (const std::string& name : report.unrecognisedFileNames())
            unknown << fileName(name);
        if (unknown.isEmpty())
            return QStringLiteral("No checksum file");
        return QStringLiteral("No checksum file I can read (%1: format not recognised)")
            .arg(unknown.join(QStringLiteral(", ")));
    }
    case VerificationReport::Ok: {
        const int matched = namesWith(report, ChecksumVerdict::Match).size();
        return QStringLiteral("Checksums OK: %1 of %2 files (%3)")
            .arg(matched)
            .arg(matched + static_cast<int>(report.unlisted.size()))
            .arg(report.recognisedFileNames());
    }
    case VerificationReport::Failed:
        break;
    }
    const QStringList mismatched = namesWith(report, ChecksumVerdict::Mismatch);
    const QStringList missing = namesWith(report, ChecksumVerdict::Missing);
    const QStringList unreadable = namesWith(report, ChecksumVerdict::Unreadable);
    QStringList parts;
    if (mismatched.size() == 1)
        parts << QStringLiteral("%1 does not match its checksum").arg(mismatched.first());
    else if (mismatched.size() > 1)
        parts << QStringLiteral("%1 files do not match their checksums").arg(mismatched.size());
    if (missing.size() == 1)
        parts << QStringLiteral("%1 is missing").arg(missing.first());
    else if (missing.size() > 1)
        parts << QStringLiteral("%1 listed files are missing").arg(missing.size());
    if (unreadable.size() == 1)
        parts << QStringLiteral("%1 cannot be read").arg(unreadable.first());
    else if (unreadable.size() > 1)
        parts << QStringLiteral("%1 files cannot be read").arg(unreadable.size());
    return parts.join(QStringLiteral("; "));
}

} // namespace

QString verdictLine(const VerificationReport& report)
{
    QString line = checksumLine(report);
    const QString findings = findingsSummary(report.findings);
    if (!findings.isEmpty())
        line += QStringLiteral(" · ") + findings;
    return line;
}

QString verdictWord(const ChecksumVerdict& verdict)
{
    switch (verdict.status) {
    case ChecksumVerdict::Match:
        return QStringLiteral("OK");
    case ChecksumVerdict::Mismatch:
        return QStringLiteral("FAILED");
    case ChecksumVerdict::Missing:
        return QStringLiteral("FAILED open or read (missing)");
    case ChecksumVerdict::Unreadable:
        return QStringLiteral("FAILED open or read");
    case ChecksumVerdict::NotChecked:
        break;
    }
    return QStringLiteral("NOT CHECKED");
}

QByteArray verificationText(const VerificationReport& report)
{
    QString out;
    for (const ChecksumFile& file : report.checksumFiles)
        out += file.format == ChecksumFile::Unrecognised
                   ? QStringLiteral("%1: format not recognised, not used\n")
                         .arg(fileName(file.fileName))
                   : QStringLiteral("%1: %2 checksums of %3 files\n")
                         .arg(fileName(file.fileName), formatName(file.format))
                         .arg(file.entries.size());
    for (const ChecksumVerdict& verdict : report.verdicts)
        out += QStringLiteral("%1: %2\n").arg(fileName(verdict.name), verdictWord(verdict));
    for (const std::string& name : report.unlisted)
        out += QStringLiteral("%1: not listed in any checksum file\n").arg(fileName(name));
    out += checksumLine(report) + QLatin1Char('\n');
    for (const Finding& finding : report.findings) {
        out += QStringLiteral("%1 %2").arg(QLatin1String(severityName(finding.severity)),
                                           QString::fromStdString(finding.id));
        if (finding.track > 0)
            out += QStringLiteral(" (track %1)").arg(finding.track);
        out += QStringLiteral(": ") + finding.text + QLatin1Char('\n');
    }
    return out.toUtf8();
}

QJsonObject checksumsJson(const VerificationReport& report)
{
    QJsonArray files;
    for (const ChecksumFile& file : report.checksumFiles)
        files.append(QJsonObject{{QStringLiteral("name"), fileName(file.fileName)},
                                 {QStringLiteral("format"), formatName(file.format)},
                                 {QStringLiteral("entries"), int(file.entries.size())}});
    QJsonArray verdicts;
    for (const ChecksumVerdict& verdict : report.verdicts) {
        static const char* const kStatus[] = {"not-checked", "match", "mismatch", "missing",
                                              "unreadable"};
        verdicts.append(QJsonObject{
            {QStringLiteral("name"), fileName(verdict.name)},
            {QStringLiteral("checksumFile"), fileName(verdict.checksumFile)},
            {QStringLiteral("algorithm"), algorithmName(verdict.algorithm)},
            {QStringLiteral("expected"), QString::fromStdString(verdict.expected)},
            {QStringLiteral("computed"),
             verdict.computed.empty() ? QJsonValue(QJsonValue::Null)
                                      : QJsonValue(QString::fromStdString(verdict.computed))},
            {QStringLiteral("status"), QLatin1String(kStatus[verdict.status])},
        });
    }
    QJsonArray unlisted;
    for (const std::string& name : report.unlisted)
        unlisted.append(fileName(name));
    return QJsonObject{{QStringLiteral("state"), stateName(report.state())},
                       {QStringLiteral("line"), checksumLine(report)},
                       {QStringLiteral("files"), files},
                       {QStringLiteral("verdicts"), verdicts},
                       {QStringLiteral("unlisted"), unlisted}};
}

QJsonArray findingsJson(const std::vector<Finding>& list)
{
    QJsonArray findings;
    for (const Finding& finding : list)
        findings.append(QJsonObject{
            {QStringLiteral("id"), QString::fromStdString(finding.id)},
            {QStringLiteral("severity"), QLatin1String(severityName(finding.severity))},
            {QStringLiteral("track"), finding.track},
            {QStringLiteral("text"), finding.text},
        });
    return findings;
}
