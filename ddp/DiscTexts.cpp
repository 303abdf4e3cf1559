#include "ddp/DiscTexts.h"

#include "ddp/CdTextStrings.h"
#include "ddp/DDPModel.h"

#include <exception>

QString albumText(const DDPModel& model, CdTextRecord::SlotIndex slot)
{
    if (!model.hasCdText())
        return {};
    try {
        return cdTextString(model.cdText(), 0, slot).trimmed();
    } catch (const std::exception&) {
        return {};
    }
}

QString discUpcEan(const DDPModel& model)
{
    const QString text = albumText(model, CdTextRecord::Code);
    if (!text.isEmpty())
        return text;
    for (const PqEntry& entry : model.entries()) {
        const std::string_view field = entry.upcEan();
        // The field is blank- or zero-padded when unused.
        const QString code =
            QString::fromLatin1(field.data(), int(field.size())).remove(QChar(0)).trimmed();
        if (!code.isEmpty())
            return code;
    }
    return QString::fromLatin1(model.ddpIdUpcEan().c_str()).trimmed();
}
