#include "lumo/components/wirecall/LockChecks.h"

#include <absl/synchronization/mutex.h>

namespace wirecall {

void endDeadlockSearch()
{
    absl::SetMutexDeadlockDetectionMode(absl::OnDeadlockCycle::kIgnore);
}

} // namespace wirecall
