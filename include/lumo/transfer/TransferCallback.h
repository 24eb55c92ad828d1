#ifndef LUMO_TRANSFER_TRANSFERCALLBACK_H
#define LUMO_TRANSFER_TRANSFERCALLBACK_H

#include <boost/function.hpp>

/// Gets the progress of a transfer: (taskID, direction, code, percent). An empty function is valid.
///
/// taskID names the transfer. It is a text in the code page of CLumoCStringCodec and is valid only during the
/// call. The first call, with code 0 and percent 0, gives it to the application. direction and code are those
/// of TransferCodes.h, or a code of the bulk transfer client (lumo/components/bulkhaul/Bulkhaul.h). percent
/// is 0 at the start, 100 at the end, and 0 with a failure that is not the bulk transfer client's, whose
/// failure comes with the last percent.
///
/// The download of a place in the catalogue, and any download with path conversion, reports its start, then
/// its end or one failure. All others report what the bulk transfer client reports, and after its failure
/// code 999.
///
/// Called on threads of the library, never on the one that started the transfer; calls for different
/// transfers may overlap. The function must neither throw nor end the process, which waits for the transfer.
typedef boost::function<void(const char*, int, int, int)> TransferCallback;

#endif
