#ifndef LUMO_TRANSFER_TRANSFERMANAGER_H
#define LUMO_TRANSFER_TRANSFERMANAGER_H

#include "lumo/core/LumoDataMgr.h"

/// Returns the manager that a task works for: the one of the process, looked up each time. It outlives the
/// task.
inline CLumoDataMgr& manager()
{
    return *CLumoDataMgr::GetSinglePton();
}

#endif
