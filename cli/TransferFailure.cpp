#include "cli/Transfer.h"

#include "cli/Connection.h"

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/core/LumoDataMgr.h"

#include <algorithm>

namespace cli {

std::string failureText(int code, const std::string& reason)
{
    static const struct
    {
        const char* text;
        int code;
        bool kept; ///< the same command may go on where this one stopped
    } kTexts[] = {
        {"a local folder can't be made or written", kFolderFailed, false},
        {"a local file can't be made or copied", kCopyFailed, false},
        {"the catalogue failed a look-up on the way", kLookupFailed, true},
        {"the storage box is not reached", kNoChannel, false},
        {"the transfer failed", kTransferFailed, false},
        {"the storage box was not reached, or the connection broke", bulkhaul::kNoConnection, true},
        {"nothing moved any more", bulkhaul::kStalled, true},
        {"the storage box does not let you do that", bulkhaul::kRefused, false},
        {"the source, or something below it, is not there", bulkhaul::kNotFound, false},
        {"the source changed while it was read", bulkhaul::kSourceChanged, false},
        {"the source, or something below it, can't be read", bulkhaul::kUnreadable, false},
        {"the target can't be made or written", bulkhaul::kNotWritable, false},
        {"no space is left for the target", bulkhaul::kNoSpace, true},
        {"what arrived is not what was sent", bulkhaul::kCorrupted, false},
        {"a name that no file can have here, or that is not UTF-8", bulkhaul::kUnsafeName, false},
        {"a link, a special file, or a folder where a file is needed or the reverse", bulkhaul::kWrongKind,
         false},
        {"another transfer writes to the target", bulkhaul::kBusy, false},
        {"the storage box failed for a reason of its own", bulkhaul::kBoxFailed, false},
        {"what answers is no storage box that this program understands", bulkhaul::kNotUnderstood, false},
    };
    const auto* const known = std::find_if(std::begin(kTexts), std::end(kTexts),
                                           [code](const auto& one) { return one.code == code; });
    if (known == std::end(kTexts))
        return "the transfer failed with code " + std::to_string(code);
    return known->text + (reason.empty() ? "" : " (" + reason + ")") +
           (known->kept ? "; what arrived is kept: run the same command again to go on" : "");
}

std::string refusalText(Session& session, const Found& found)
{
    const Reason reason = session.journal.lastReason();
    const auto disk = session.catalogue.diskOf(found);
    if (disk && disk->kestaCode && disk->kestaCode->empty())
        return "its disk is on no storage box, so that its files can't be moved";
    if (reason.operation == "getKestaInfo" && reason.kind == Reason::Kind::ErrorResult && disk)
        return "the centre knows no storage box '" + disk->kestaCode.value_or("") + "'";
    return "the centre failed the request: " + describe(reason);
}

} // namespace cli
