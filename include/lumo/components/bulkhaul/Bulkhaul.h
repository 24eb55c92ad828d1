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

/// The results of Download and Upload. The numbers are documented in docs/bulkhaul.md and stay.
enum Code
{
    kDone = 0,
    kNoConnection = 201,  ///< the box was not reached, or the connection broke
    kStalled = 202,       ///< nothing moved within the stall limit
    kRefused = 203,       ///< the box does not let this user do that
    kNotFound = 204,      ///< there is no such source
    kSourceChanged = 205, ///< the source changed while it was read
    kUnreadable = 206,    ///< the source, or something below it, can't be read
    kNotWritable = 207,   ///< the target can't be made or written
    kNoSpace = 208,       ///< a disk or a quota is full; what arrived is kept for the next attempt
    kCorrupted = 209,     ///< what arrived is not what was sent
    kUnsafeName = 210,    ///< a name that is not a single path component, or not UTF-8
    kWrongKind = 211,     ///< a folder where a file is needed or the reverse; a link or a special file
    kBusy = 212,          ///< another transfer writes to the target
    kBoxFailed = 213,     ///< the box failed for a reason of its own
    kNotUnderstood = 214, ///< the other side does not follow the protocol
    kFailedHere = 215     ///< this machine failed for another reason: no memory, no threads
};

/// What a Code means, in plain English for a message to the user, without a full stop; null for a number that
/// is no Code. Safe from any thread.
LUMO_EXPORT const char* textOf(int code);

/// Receives the client's status lines, a level (0 information, 1 warning, 2 error) and a text, on a
/// thread of the client, until EndBulkhaul has returned.
typedef boost::function<void(int, const std::string&)> StatusFunction;

/// Receives the client's identifier of a transfer, a code and a percentage on a thread of the client: once
/// (0, 0) at the start, then rising percentages, then (0, 100) when the target stands whole under its
/// name, or (the result's code, the last percentage). Never two at once; the last one has returned before
/// the transfer does. What it throws is dropped.
typedef boost::function<void(const std::string&, int, int)> ProgressFunction;

/// Starts the client, or, when it runs already, replaces its settings. `chunksInFlight` is the number
/// of chunks of one transfer that may be under way at once, `filesInFlight` that of requests for small
/// files of one folder. False when either is less than 1, when no thread can be had, or when called by the
/// status function; nothing has changed then. A status function that is replaced may still be running.
/// What it throws is dropped. Safe from any thread.
LUMO_EXPORT bool StartBulkhaul(int chunksInFlight, int filesInFlight, StatusFunction status);

/// Ends the client: no status line comes after it has returned. Does nothing when the client does not run,
/// or when called by the status function. Transfers are not cut short: those that run, and those that
/// still begin, go to their end with the last settings.
LUMO_EXPORT void EndBulkhaul();

/// How long a transfer waits while nothing moves before it fails with kStalled, in milliseconds, at least
/// 1; 60000 unless set. For transfers that begin afterwards. Safe from any thread.
LUMO_EXPORT void setStallLimit(long long milliseconds);

/// Lets the C library keep some of the memory that chunks free, instead of giving it back to the system each
/// time: transfers were measured a quarter to a third faster. It is for the whole process, so it is for
/// programs to call, at their start; the client itself never does.
LUMO_EXPORT void keepFreedMemory();

/// Moves the file or folder `boxPath` of the storage box behind `channel` to `localPath`, a folder with all
/// that lies below it, and returns when that has ended. Paths are UTF-8 with "/". With `keepExisting` a
/// file or link that exists at a file's target counts as done; otherwise it is replaced.
///
/// Each file appears whole, flushed and verified under its name, or not at all; what arrived of a transfer
/// that failed is kept beside the target, and the same call goes on from there. `message` is carried to
/// the box, which judges by it whether the user may do this; may be null. `reserved` must be null. Result:
/// a Code. Safe from any thread; memory is bounded whatever the size. An empty `progress` is fine.
LUMO_EXPORT int Download(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                         const std::string& localPath, bool keepExisting, ProgressFunction progress,
                         const google::protobuf::Message* message, google::protobuf::Message* reserved);

/// Moves the file or folder `localPath` to `boxPath`, in the same way; it is in the catalogue when the call
/// returns.
LUMO_EXPORT int Upload(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                       const std::string& localPath, bool keepExisting, ProgressFunction progress,
                       const google::protobuf::Message* message, google::protobuf::Message* reserved);

/// While one lives on a thread, each download that the thread starts is of a file, and the caller knows it. A
/// file or link that `keepExisting` keeps is then done without a request to the box, which otherwise has to
/// say first whether the source is a folder: many calls for a file each, in a tree that mostly exists, save
/// most of their time.
///
/// Everything is in this header, so that a program with a bulk transfer client of its own needs no more than
/// the functions above.
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
