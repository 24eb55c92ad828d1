#ifndef LUMO_TRANSFER_TRANSFERCALLBACK_H
#define LUMO_TRANSFER_TRANSFERCALLBACK_H

#include <boost/function.hpp>

/// Hears how a transfer goes: (taskID, direction, code, percent). An empty function is valid.
///
/// taskID names the transfer, a text in the code page of CLumoCStringCodec that lives only for the call;
/// the first call, with code 0 and percent 0, is how the application learns it. direction is 0 for a
/// download, 1 for an upload. percent is 0 at the start, 100 at the end, 0 with a failure of the list, the
/// last one with a failure that the bulk transfer client reports. code is 0 or one of
///
///   6    making a local folder or copying a local directory failed; also for a folder whose name is no
///        single path component, that is a link out of the target folder, or whose copy would never end
///   8    copying a local file failed; also for a file whose name is no single path component
///   10   a lookup in the catalogue failed
///   101  no channel to the storage box could be opened
///   999  the bulk transfer client reported failure for a whole transfer
///
/// or what the bulk transfer client reported (components/bulkhaul/Bulkhaul.h). The download of a place in
/// the catalogue, and any with path conversion, tells its start and then its end or one failure; the others
/// tell what the client reports, and 999 behind a failure.
///
/// Called on threads of the library, never on the one that started the transfer; calls for different
/// transfers may overlap. It must neither throw nor end the process, which waits for the transfer.
typedef boost::function<void(const char*, int, int, int)> TransferCallback;

#endif
