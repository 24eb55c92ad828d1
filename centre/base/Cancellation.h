#ifndef LUMO_CENTRE_BASE_CANCELLATION_H
#define LUMO_CENTRE_BASE_CANCELLATION_H

#include "centre/base/Error.h"

#include <functional>

namespace centre {

/// Returns whether long work is to be given up, because its caller has gone or has lost the right to it, or
/// the centre stops. Never empty.
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
        throw refusal("given up: the caller has gone or may do it no longer, or the centre stops");
}

} // namespace centre

#endif
