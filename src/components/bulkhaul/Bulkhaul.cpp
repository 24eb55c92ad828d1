#include "lumo/components/bulkhaul/Bulkhaul.h"

#include "components/bulkhaul/FileFailure.h"
#include "components/bulkhaul/StatusLines.h"
#include "components/bulkhaul/Transfer.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <malloc.h>

#include <algorithm>
#include <atomic>

namespace bulkhaul {

namespace {

/// The client of the process. Never destroyed: a transfer may still report while the process ends.
struct Client
{
    StatusLines lines;
    std::atomic<int> chunksInFlight{5};
    std::atomic<int> filesInFlight{5};
    std::atomic<long long> stallLimit{60000};
};

Client& client()
{
    static Client* const theClient = new Client;
    return *theClient;
}

typedef std::uint64_t (*Mover)(const Transfer& transfer, const std::string& boxPath,
                               const std::string& localPath);

constexpr std::size_t kLongestReason = 500;

Code failed(const std::string& what, Code code, std::string reason)
{
    // It may come from the other side: no megabytes, and no lines of its own.
    reason.resize(std::min(reason.size(), kLongestReason));
    std::replace_if(
        reason.begin(), reason.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, ' ');
    client().lines.write(kError, what + " failed with " + std::to_string(code) + ", " + reason);
    return code;
}

/// A folder's path may end with "/".
std::string withoutEndingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// Calls `work` and tells what it threw as a Code and a status line.
template <class Work>
Code judged(const std::string& what, Work work)
{
    try {
        work();
        return kDone;
    } catch (const TransferFailure& failure) {
        return failed(what, failure.code(), failure.what());
    } catch (const FileFailure& failure) {
        return failed(what, codeOf(failure.status()), failure.what());
    } catch (const std::exception& exception) {
        return failed(what, kFailedHere, exception.what());
    }
}

int move(const char* direction, Mover mover, const boost::shared_ptr<wirecall::RpcChannel>& channel,
         const std::string& boxPath, const std::string& localPath, bool keepExisting,
         ProgressFunction progressFunction, const google::protobuf::Message* message)
{
    Code code = kFailedHere;
    const Code begun = judged(std::string(direction) + " of " + boxPath, [&] {
        const std::string transferID = to_string(boost::uuids::random_generator()());
        Progress progress(std::move(progressFunction), transferID);
        BoxClient box(*channel, message, client().stallLimit);
        const Transfer transfer{box, progress, client().chunksInFlight, client().filesInFlight,
                                keepExisting ? Existing::Keep : Existing::Replace};
        const std::string what = std::string(direction) + " " + transferID + " of " + boxPath;
        code = judged(what, [&] {
            const std::uint64_t kept =
                mover(transfer, withoutEndingSlashes(boxPath), withoutEndingSlashes(localPath));
            if (progress.isWanted())
                client().lines.write(kInformation, what + " is done, " + std::to_string(kept) + " kept");
        });
        progress.setResult(code);
    });
    return begun == kDone ? code : begun;
}

} // namespace

bool StartBulkhaul(int chunksInFlight, int filesInFlight, StatusFunction status)
{
    if (chunksInFlight < 1 || filesInFlight < 1)
        return false;
    const std::string line = "bulk transfer client started, " + std::to_string(chunksInFlight) +
                             " chunks and " + std::to_string(filesInFlight) + " files in flight";
    if (!client().lines.start(line, std::move(status)))
        return false;
    client().chunksInFlight = chunksInFlight;
    client().filesInFlight = filesInFlight;
    return true;
}

void EndBulkhaul()
{
    client().lines.end("bulk transfer client ended");
}

void setStallLimit(long long milliseconds)
{
    client().stallLimit = std::max(1LL, milliseconds);
}

void keepFreedMemory()
{
    constexpr int kKept = 8 * 1024 * 1024; // bytes of each arena
    ::mallopt(M_TRIM_THRESHOLD, kKept);
    ::mallopt(M_MMAP_THRESHOLD, 2 * kKept);
    ::mallopt(M_ARENA_MAX, 4);
}

int Download(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
             const std::string& localPath, bool keepExisting, ProgressFunction progress,
             const google::protobuf::Message* message, google::protobuf::Message*)
{
    return move("download", &download, channel, boxPath, localPath, keepExisting, std::move(progress),
                message);
}

int Upload(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
           const std::string& localPath, bool keepExisting, ProgressFunction progress,
           const google::protobuf::Message* message, google::protobuf::Message*)
{
    return move("upload", &upload, channel, boxPath, localPath, keepExisting, std::move(progress), message);
}

} // namespace bulkhaul
