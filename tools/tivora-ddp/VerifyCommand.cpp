// tivora-ddp verify [--json] PATH: the checksum files beside a DDP checked
// against one read of every file they list, then the disc checked against
// the rules a plant applies. Exit status 0 when every listed file matches
// and no finding is an error, 1 otherwise (or when the DDP does not load),
// 3 when there is no checksum file to verify and no error.
#include "tools/tivora-ddp/CommandSupport.h"
#include "tools/tivora-ddp/Commands.h"
#include "tools/tivora-ddp/TerminalText.h"

#include "ddp/ErrorTexts.h"
#include "verify/Verification.h"
#include "verify/VerificationText.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

int runVerify(const QStringList& args)
{
    const std::optional<PathArguments> arguments = parsePathArguments(args);
    if (!arguments)
        return usageError("tivora-ddp verify [--json] PATH");
    const bool json = arguments->json;

    InfoReport report = makeInfoReport(arguments->path);
    addVerification(report);
    // A DDP that does not load has nothing to verify: the load's error is
    // the answer. One without its image still has checksums to check.
    const bool loaded = report.verification != nullptr;
    const int status = loaded ? report.verification->exitStatus() : 1;
    if (json) {
        QJsonObject object{
            {QStringLiteral("path"), report.folder},
            {QStringLiteral("kind"), static_cast<int>(report.result.kind)},
            {QStringLiteral("message"), QString::fromStdString(report.result.message)},
            {QStringLiteral("exitStatus"), status},
        };
        if (loaded) {
            object.insert(QStringLiteral("checksums"), checksumsJson(*report.verification));
            object.insert(QStringLiteral("findings"), findingsJson(report.verification->findings));
        }
        writeOut(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
        return status;
    }
    if (!loaded) {
        QString text = QStringLiteral("Error %1: %2\n")
                           .arg(static_cast<int>(report.result.kind))
                           .arg(errorTitle(report.result.kind));
        if (!report.result.message.empty())
            text += QStringLiteral("Message: %1\n")
                        .arg(terminalText(QString::fromStdString(report.result.message)));
        writeOut(text.toUtf8());
        return status;
    }
    // Names come from the disc: each line goes to the terminal escaped.
    QString text;
    const QStringList lines =
        QString::fromUtf8(verificationText(*report.verification)).split(QLatin1Char('\n'));
    for (int i = 0; i + 1 < lines.size(); ++i)
        text += terminalText(lines[i]) + QLatin1Char('\n');
    writeOut(text.toUtf8());
    return status;
}
