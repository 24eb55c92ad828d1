#include "lumo/components/bulkhaul/Bulkhaul.h"

#include "components/bulkhaul/EndFunction.h"
#include "components/bulkhaul/StatusLines.h"
#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "lumo/components/platform/CodePage.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>

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

typedef void (*Mover)(const Transfer& transfer, const std::string& boxPath, const std::string& localPath);

constexpr std::size_t kLongestReason = 500;

/// A text, possibly the other side's, as one line of UTF-8 that is not too long.
std::string asReason(std::string text)
{
    text.resize(std::min(text.size(), kLongestReason));
    std::replace_if(
        text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, ' ');
    constexpr unsigned int kUtf8 = platform::kUtf8CodePage;
    std::string line(platform::recode(kUtf8, kUtf8, text.data(), text.size(), nullptr, 0), '\0');
    platform::recode(kUtf8, kUtf8, text.data(), text.size(), line.data(), line.size());
    return line;
}

void fail(TransferEnd& end, Code code, const std::string& what, const std::string& reason)
{
    end.code = code;
    end.reason = asReason(reason);
    client().lines.write(kError, what + " failed with " + std::to_string(code) + ", " + end.reason);
}

/// Removes the "/" that a folder's path may end with.
std::string withoutEndingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// Calls `work`, and turns what it throws into a failure of `end` and a status line.
template <class Work>
void judge(TransferEnd& end, const std::string& what, Work work)
{
    try {
        work();
        end.code = kDone;
    } catch (const TransferFailure& failure) {
        fail(end, failure.code(), what, failure.what());
    } catch (const FileFailure& failure) {
        fail(end, codeOf(failure.status()), what, failure.what());
    } catch (const std::exception& exception) {
        fail(end, kFailedHere, what, exception.what());
    }
}

int move(const char* direction, Mover mover, const boost::shared_ptr<wirecall::RpcChannel>& channel,
         const std::string& boxPath, const std::string& localPath, bool keepExisting,
         ProgressFunction progressFunction, const google::protobuf::Message* message)
{
    TransferEnd end;
    end.boxPath = boxPath;
    end.localPath = localPath;
    bool begun = false;
    try {
        end.transferID = to_string(boost::uuids::random_generator()());
        const std::string what = std::string(direction) + " " + end.transferID + " of " + boxPath;
        BoxClient box(*channel, message, client().stallLimit);
        Progress progress(std::move(progressFunction), end.transferID);
        begun = true;
        Tally tally;
        judge(end, what, [&] {
            const Transfer transfer{box,
                                    progress,
                                    tally,
                                    client().chunksInFlight,
                                    client().filesInFlight,
                                    keepExisting ? Existing::Keep : Existing::Replace,
                                    mover == &download && SourcesAreFiles::known()};
            mover(transfer, withoutEndingSlashes(boxPath), withoutEndingSlashes(localPath));
            if (!transfer.sourceIsFile) // a walk would fill the log with its files
                client().lines.write(kInformation,
                                     what + " is done, " + std::to_string(tally.filesKept) + " kept");
        });
        end.filesKept = tally.filesKept;
        end.bytesMoved = tally.bytesMoved;
        progress.end(end);
    } catch (const std::exception& exception) { // no thread for the progress function, or no memory
        fail(end, kFailedHere, std::string(direction) + " of " + boxPath, exception.what());
        if (!begun)
            callEndFunction(end);
    }
    return end.code;
}

} // namespace

long long stallLimit()
{
    return client().stallLimit;
}

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
