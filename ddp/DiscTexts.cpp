#include "ddp/DiscTexts.h"

#include "ddp/CdTextStrings.h"
#include "ddp/DDPModel.h"

#include <exception>

QString trackText(const DDPModel& model, int track, CdTextRecord::SlotIndex slot)
{
    if (!model.hasCdText() || track < 0)
        return {};
    try {
        return cdTextString(model.cdText(), static_cast<std::size_t>(track), slot).trimmed();
    } catch (const std::exception&) {
        return {}; // a track past the CD-Text has no text
    }
}

QString albumText(const DDPModel& model, CdTextRecord::SlotIndex slot)
{
    return trackText(model, 0, slot);
}

bool isZeroCode(const QString& code)
{
    if (code.isEmpty())
        return false;
    for (QChar c : code) {
        if (c != QLatin1Char('0'))
            return false;
    }
    return true;
}

QString discUpcEan(const DDPModel& model, ZeroCodes zeros)
{
    const auto used = [zeros](QString code) {
        // A field is blank- or zero-padded when unused.
        code = code.remove(QChar(0)).trimmed();
        return zeros == ZeroCodes::Skipped && isZeroCode(code) ? QString() : code;
    };
    const QString text = used(albumText(model, CdTextRecord::Code));
    if (!text.isEmpty())
        return text;
    for (const PqEntry& entry : model.entries()) {
        const std::string_view field = entry.upcEan();
        const QString code = used(QString::fromLatin1(field.data(), int(field.size())));
        if (!code.isEmpty())
            return code;
    }
    return used(QString::fromLatin1(model.ddpIdUpcEan().c_str()));
}
