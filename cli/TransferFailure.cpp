#include "cli/Transfer.h"

#include "cli/Connection.h"

#include "components/bulkhaul/Bulkhaul.h"
#include "core/LumoDataMgr.h"

#include <algorithm>

namespace cli {

std::string failureText(int code, const std::string& reason)
{
    static const struct
    {
        int code;
        const char* text;
        bool kept; ///< the same command may go on where this one stopped
    } kTexts[] = {
        {kFolderFailed, "a local folder can't be made or written", false},
        {kCopyFailed, "a local file can't be made or copied", false},
        {kLookupFailed, "the catalogue failed a look-up on the way", true},
        {kNoChannel, "the storage box is not reached", false},
        {kTransferFailed, "the transfer failed", false},
        {bulkhaul::kNoConnection, "the storage box was not reached, or the connection broke", true},
        {bulkhaul::kStalled, "nothing moved any more", true},
        {bulkhaul::kRefused, "the storage box does not let you do that", false},
        {bulkhaul::kNotFound, "the source, or something below it, is not there", false},
        {bulkhaul::kSourceChanged, "the source changed while it was read", false},
        {bulkhaul::kUnreadable, "the source, or something below it, can't be read", false},
        {bulkhaul::kNotWritable, "the target can't be made or written", false},
        {bulkhaul::kNoSpace, "no space is left for the target", true},
        {bulkhaul::kCorrupted, "what arrived is not what was sent", false},
        {bulkhaul::kUnsafeName, "a name that no file can have here, or that is not UTF-8", false},
        {bulkhaul::kWrongKind, "a link, a special file, or a folder where a file is needed or the reverse",
         false},
        {bulkhaul::kBusy, "another transfer writes to the target", false},
        {bulkhaul::kBoxFailed, "the storage box failed for a reason of its own", false},
        {bulkhaul::kNotUnderstood, "what answers is no storage box that this program understands", false},
    };
    const auto* const known = std::find_if(std::begin(kTexts), std::end(kTexts),
                                           [code](const auto& one) { return one.code == code; });
    if (known == std::end(kTexts)) {
        return "the transfer failed with code " + std::to_string(code);
    }
    return known->text + (reason.empty() ? "" : " (" + reason + ")") +
           (known->kept ? "; what arrived is kept: run the same command again to go on" : "");
}

std::string refusalText(Session& session, const Found& found)
{
    const Reason reason = session.journal.lastReason();
    const auto disk = session.catalogue.diskOf(found);
    if (disk && disk->kestaCode && disk->kestaCode->empty()) {
        return "its disk is on no storage box, so that its files can't be moved";
    }
    if (reason.operation == "getKestaInfo" && reason.kind == Reason::Kind::ErrorResult && disk) {
        return "the centre knows no storage box '" + disk->kestaCode.value_or("") + "'";
    }
    return "the centre failed the request: " + describe(reason);
}

} // namespace cli
