#ifndef LUMO_CENTRE_BASE_CANCELLATION_H
#define LUMO_CENTRE_BASE_CANCELLATION_H

#include "centre/base/Error.h"

#include <functional>

namespace centre {

/// Returns whether nobody waits for the result of long work any more, because its caller has gone or the
/// centre stops. Never empty.
using IsCanceled = std::function<bool()>;

/// For work that somebody always waits for.
inline bool neverCanceled()
{
    return false;
}

/// For long work between its steps: throws Error(Failed) once it is canceled.
inline void requireNotCanceled(const IsCanceled& isCanceled)
{
    if (isCanceled())
        throw refusal("given up: the caller has gone, or the centre stops");
}

} // namespace centre

#endif
