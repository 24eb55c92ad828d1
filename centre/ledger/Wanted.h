#ifndef LUMO_CENTRE_LEDGER_WANTED_H
#define LUMO_CENTRE_LEDGER_WANTED_H

#include "centre/store/Error.h"

#include <google/protobuf/service.h>

namespace centre {

/// For long work between its steps: throws Error(Failed) once nobody waits for the call's answer any more,
/// because its caller has gone or the centre stops.
inline void requireWanted(const google::protobuf::RpcController& call)
{
    if (call.IsCanceled())
        throw refusal("given up: the caller has gone, or the centre stops");
}

} // namespace centre

#endif
