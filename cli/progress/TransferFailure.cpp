#include "cli/progress/Transfer.h"

#include "cli/Connection.h"

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

/// What a code of the library's own tasks means; null for any other.
const char* taskText(int code)
{
    switch (code) {
    case kFolderFailed:
        return "a local folder can't be made or written";
    case kCopyFailed:
        return "a local file can't be made or copied";
    case kLookupFailed:
        return "the catalogue failed a look-up on the way";
    case kNoChannel:
        return "the storage box is not reached";
    case kTransferFailed:
        return "the transfer failed";
    default:
        return nullptr;
    }
}

} // namespace

std::string failureText(int code, const std::string& reason)
{
    const char* text = taskText(code);
    if (text == nullptr)
        text = bulkhaul::textOf(code);
    if (text == nullptr)
        return "the transfer failed with code " + std::to_string(code);
    const bool kept = code == kLookupFailed || code == bulkhaul::kNoConnection ||
                      code == bulkhaul::kStalled || code == bulkhaul::kNoSpace;
    return text + (reason.empty() ? "" : " (" + reason + ")") +
           (kept ? "; what arrived is kept: run the same command again to go on" : "");
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
