#ifndef LUMO_TRANSFER_TRANSFERMANAGER_H
#define LUMO_TRANSFER_TRANSFERMANAGER_H

#include "lumo/core/LumoDataMgr.h"

/// The manager that a task works for: the process's own, looked up each time, which it outlives.
inline CLumoDataMgr& manager()
{
    return *CLumoDataMgr::GetSinglePton();
}

#endif
