#ifndef LUMO_COMPONENTS_BULKHAUL_TRANSFEREND_H
#define LUMO_COMPONENTS_BULKHAUL_TRANSFEREND_H

#include "lumo/components/platform/Export.h"

#include <boost/function.hpp>

#include <cstdint>
#include <string>

namespace bulkhaul {

/// How a call of Download or Upload ended. All texts are UTF-8.
struct TransferEnd
{
    int code = 0;                 ///< the call's result, a Code
    std::string reason;           ///< of a failure, in words: one line of at most 1500 bytes; else empty
    std::uint64_t filesKept = 0;  ///< files that existed at the target and were kept as `keepExisting` asks
    std::uint64_t bytesMoved = 0; ///< of file content that was sent in this call and arrived intact
    std::string transferID;       ///< the identifier that the progress function gets
    std::string boxPath;          ///< as passed to the call
    std::string localPath;        ///< as passed to the call
};

/// Receives the end of every transfer of the process, also of one without a progress function and of one that
/// the status function never hears of because the client was not started.
///
/// It is called once for each call of Download and Upload, before that call returns: on the thread that
/// calls the transfer's progress function, right before the last call of that one, so that a thread-local
/// variable can carry the end to it; without a progress function, on the thread that called Download or
/// Upload. It is never called twice at once. What it throws is dropped. It must not wait for another
/// transfer.
typedef boost::function<void(const TransferEnd&)> EndFunction;

/// Sets the end function of the process; an empty one unsets it. There is one at a time. When this returns,
/// the former function is not running any more and is never called again, unless it is the caller. So the
/// caller must hold no lock that the former function takes. Safe from any thread.
LUMO_EXPORT void setEndFunction(EndFunction function);

} // namespace bulkhaul

#endif
