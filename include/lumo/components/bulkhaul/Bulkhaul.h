#ifndef LUMO_COMPONENTS_BULKHAUL_BULKHAUL_H
#define LUMO_COMPONENTS_BULKHAUL_BULKHAUL_H

#include "lumo/components/platform/Export.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <string>

namespace google {
namespace protobuf {
class Message;
}
} // namespace google

namespace wirecall {
class RpcChannel;
}

/// The bulk transfer client: files and folders between this machine and a storage box.
namespace bulkhaul {

/// The results of Download and Upload. The numbers are documented in docs/bulkhaul.md and do not change.
enum Code
{
    kDone = 0,
    kNoConnection = 201,  ///< the box was not reached, or the connection broke
    kStalled = 202,       ///< nothing moved within the stall limit
    kRefused = 203,       ///< the box does not let this user do that
    kNotFound = 204,      ///< the source does not exist
    kSourceChanged = 205, ///< the source changed while it was read
    kUnreadable = 206,    ///< the source, or something below it, can't be read
    kNotWritable = 207,   ///< the target can't be made or written
    kNoSpace = 208,       ///< a disk or a quota is full; the data that arrived is kept for the next attempt
    kCorrupted = 209,     ///< the data that arrived is not the data that was sent
    kUnsafeName = 210,    ///< a name that is not a single path component, or not UTF-8
    kWrongKind = 211,     ///< a folder where a file is needed or the reverse; a link or a special file
    kBusy = 212,          ///< another transfer writes to the target, and does not get on
    kBoxFailed = 213,     ///< the box failed, or does not know the transfer any more
    kNotUnderstood = 214, ///< the other side is no storage box, or breaks the rules of the protocol
    kFailedHere = 215     ///< this machine failed for another reason: no memory, no threads
};

/// What a Code means, in plain English for a message to the user, without a full stop; null for a number that
/// is no Code. Safe from any thread.
LUMO_EXPORT const char* textOf(int code);

/// Receives the client's status lines, a level (0 information, 1 warning, 2 error) and a text, on a
/// thread of the client, until EndBulkhaul has returned.
typedef boost::function<void(int, const std::string&)> StatusFunction;

/// Receives the client's identifier of a transfer, a code and a percentage on a thread of the client: (0, 0)
/// once at the start, then rising percentages, then (0, 100) when the target is complete under its name, or
/// the result's code with the last percentage. It is never called twice at once, and the last call returns
/// before the transfer does. What it throws is dropped.
typedef boost::function<void(const std::string&, int, int)> ProgressFunction;

/// Starts the client, or, when it is running, replaces its settings. `chunksInFlight` is the number of chunks
/// of one large file that may wait between the connection and the disk, at most four whatever is given, and
/// of requests that compare chunks at once; `filesInFlight` the number of requests for small files of one
/// folder at once, up to two large files beside them. Returns false and changes nothing when either is less
/// than 1, when no thread can be started, or when called by the status function. A status function that is
/// replaced may still be running. What it throws is dropped. Safe from any thread.
LUMO_EXPORT bool StartBulkhaul(int chunksInFlight, int filesInFlight, StatusFunction status);

/// Ends the client: the status function is not called after this has returned. Does nothing when the client
/// is not running, or when called by the status function. Transfers are not affected: those that run, and
/// those that begin afterwards, use the last settings.
LUMO_EXPORT void EndBulkhaul();

/// Sets how long a transfer waits while nothing moves before it fails with kStalled, in milliseconds, at
/// least 1; 60000 unless set. Applies to transfers that begin afterwards. Safe from any thread.
LUMO_EXPORT void setStallLimit(long long milliseconds);

/// Lets the C library keep some of the memory that chunks free, instead of returning it to the system each
/// time: transfers were measured a quarter to a third faster. It affects the whole process, so a program
/// calls it at its start; the client never does.
LUMO_EXPORT void keepFreedMemory();

/// Moves the file or folder `boxPath` of the storage box at the other end of `channel` to `localPath`, a
/// folder with everything below it, and returns a Code when that has ended. Paths are UTF-8 with "/". With
/// `keepExisting` a file or link that exists at a file's target counts as done; otherwise it is replaced.
///
/// Each file appears under its name complete, flushed and verified, or not at all. The data that arrived of a
/// transfer that failed is kept beside the target, and the same call continues from there. `message` is
/// carried to the box, which judges by it whether the user may do this; it may be null. `progress` may be
/// empty. `reserved` must be null. Safe from any thread; memory is bounded whatever the size.
LUMO_EXPORT int Download(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                         const std::string& localPath, bool keepExisting, ProgressFunction progress,
                         const google::protobuf::Message* message, google::protobuf::Message* reserved);

/// Moves the file or folder `localPath` to `boxPath` in the same way. It is in the catalogue when the call
/// returns.
LUMO_EXPORT int Upload(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                       const std::string& localPath, bool keepExisting, ProgressFunction progress,
                       const google::protobuf::Message* message, google::protobuf::Message* reserved);

/// States, while an object of it lives, that each download which this thread starts is of a file, not of a
/// folder. A file or link that `keepExisting` keeps is then done without a request to the box, which
/// otherwise has to answer first whether the source is a folder. That saves most of the time of many calls, a
/// file each, for a tree that mostly exists. Such a download has a status line only if it fails.
///
/// All of it is in this header, so that a program that defines the functions above itself can be linked.
class LUMO_EXPORT SourcesAreFiles
{
public:
    SourcesAreFiles() : m_Before(s_Active) { s_Active = true; }
    ~SourcesAreFiles() { s_Active = m_Before; }
    SourcesAreFiles(const SourcesAreFiles&) = delete;
    SourcesAreFiles& operator=(const SourcesAreFiles&) = delete;

    /// Whether one lives on this thread.
    static bool known() { return s_Active; }

private:
    static inline thread_local bool s_Active = false;
    const bool m_Before;
};

} // namespace bulkhaul

#endif
