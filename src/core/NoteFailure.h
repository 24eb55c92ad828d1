#ifndef LUMO_CORE_NOTEFAILURE_H
#define LUMO_CORE_NOTEFAILURE_H

#include "lumo/core/LastFailure.h"

#include <string>

namespace lumo {

/// Makes this the last failure of the calling thread. `operation` must live as long as the process.
void noteFailure(LastFailure::Kind kind, const char* operation, int code, const std::string& reason);

} // namespace lumo

#endif
