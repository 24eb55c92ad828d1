#ifndef LUMO_BULKHAUL_BULKHAUL_H
#define LUMO_BULKHAUL_BULKHAUL_H

#include "components/platform/Export.h"

#include <boost/function.hpp>

#include <string>

/// The bulk transfer client: whole files between this machine and a storage box.
namespace bulkhaul {

/// Receives the client's status lines, a level (0 information, 1 warning, 2 error) and a text, on a
/// thread of the client, until EndBulkhaul has returned.
typedef boost::function<void(int, const std::string&)> StatusFunction;

/// Starts the client, or, when it runs already, replaces its settings. `chunksInFlight` is the number
/// of chunks of one transfer that may be under way at once, `filesInFlight` that of small files of one
/// folder. False when either is less than 1, when no thread can be had, or when called by the status
/// function; nothing has changed then. A status function that is replaced may still be running. What it
/// throws is dropped. Safe from any thread.
LUMO_EXPORT bool StartBulkhaul(int chunksInFlight, int filesInFlight, StatusFunction status);

/// Ends the client: no status line comes after it has returned. Does nothing when the client does not run, or
/// when called by the status function.
LUMO_EXPORT void EndBulkhaul();

} // namespace bulkhaul

#endif
