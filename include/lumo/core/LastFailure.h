#ifndef LUMO_CORE_LASTFAILURE_H
#define LUMO_CORE_LASTFAILURE_H

#include "lumo/components/platform/Export.h"

#include <string>

namespace lumo {

/// Why a method of CLumoDataMgr failed that calls the centre: the methods themselves return only that they
/// did.
struct LastFailure
{
    enum class Kind
    {
        None,           ///< no method has failed on this thread
        NotSent,        ///< a record lacks what identifies it; nothing was sent
        NoConnection,   ///< the centre was not reached, or the connection broke
        TimeLimit,      ///< no answer within the time limit
        TokenRefused,   ///< the centre refused the token
        NotImplemented, ///< the centre does not have the operation
        CallFailed,     ///< any other call without a valid answer
        Refused,        ///< the answer is an error
        NothingFound    ///< the answer is that nothing matches
    };

    Kind kind = Kind::None;
    std::string operation; ///< the remote operation; of NotSent the method
    int code = 0;          ///< the result in the answer, if it has one; otherwise 0
    /// The centre's reason, or why there is no answer: UTF-8, at most 2048 bytes; empty if none is known. Of
    /// NotSent the key that is missing.
    std::string reason;
};

/// Returns the last failure of the calling thread. A method that succeeds leaves it. Transfers and methods
/// that are answered by signal report their failures by callback and log. Safe from any thread at any time.
LUMO_EXPORT LastFailure lastFailure();

/// Forgets the last failure of the calling thread.
LUMO_EXPORT void forgetLastFailure();

} // namespace lumo

#endif
