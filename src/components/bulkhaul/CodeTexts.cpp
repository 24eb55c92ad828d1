#include "lumo/components/bulkhaul/Bulkhaul.h"

namespace bulkhaul {

const char* textOf(int code)
{
    switch (code) {
    case kDone:
        return "the target is complete and verified, or was kept as asked";
    case kNoConnection:
        return "the storage box was not reached, or the connection broke";
    case kStalled:
        return "nothing moved within the time limit";
    case kRefused:
        return "the storage box does not let you do that";
    case kNotFound:
        return "the source, or something below it, is not there";
    case kSourceChanged:
        return "the source changed while it was read";
    case kUnreadable:
        return "the source, or something below it, can't be read";
    case kNotWritable:
        return "the target can't be made or written";
    case kNoSpace:
        return "no space is left for the target";
    case kCorrupted:
        return "the data that arrived is not the data that was sent";
    case kUnsafeName:
        return "a name is not valid here, or not UTF-8";
    case kWrongKind:
        return "a link, a special file, or a folder where a file is needed or the reverse";
    case kBusy:
        return "another transfer writes to the target";
    case kBoxFailed:
        return "the storage box failed, or does not know the transfer any more";
    case kNotUnderstood:
        return "the other side does not answer as a storage box of this version does";
    case kFailedHere:
        return "this machine failed: it lacks memory or threads";
    default:
        return nullptr;
    }
}

} // namespace bulkhaul
