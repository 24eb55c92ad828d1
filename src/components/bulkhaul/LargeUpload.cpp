#include "components/bulkhaul/LargeUpload.h"

#include "components/wirecall/Streams.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace bulkhaul {

namespace {

using haulbox::BoxServices_Stub;

constexpr std::chrono::milliseconds kPause(50);
/// How often an upload begins again after another one has taken its place.
constexpr int kMostAttempts = 16;

/// Waits for another upload to the same target as long as that one gets on.
class Patience
{
public:
    explicit Patience(long long stallLimit) : m_StallLimit(stallLimit) {}

    /// Throws TransferFailure (kBusy) when `bytes` has not changed for the stall limit.
    void wait(std::uint64_t bytes)
    {
        const auto now = Clock::now();
        if (m_Bytes != bytes) {
            m_Bytes = bytes;
            m_Since = now;
        }
        if (now - m_Since >= m_StallLimit)
            throw TransferFailure(kBusy, "another transfer writes to the target, and does not get on");
        std::this_thread::sleep_for(kPause);
    }

private:
    typedef std::chrono::steady_clock Clock;

    const std::chrono::milliseconds m_StallLimit;
    std::uint64_t m_Bytes = 0;
    Clock::time_point m_Since = Clock::now();
};

/// Reports the bytes of a file, each once, also when the file is sent again.
class FileProgress
{
public:
    explicit FileProgress(Progress& progress) : m_Progress(progress) {}

    void restart() { m_Done = 0; }

    void add(std::uint64_t bytes)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Done += bytes;
        if (m_Done <= m_Reported)
            return;
        m_Progress.add(m_Done - m_Reported);
        m_Reported = m_Done;
    }

private:
    Progress& m_Progress;
    std::mutex m_Mutex;
    std::uint64_t m_Done = 0;
    std::uint64_t m_Reported = 0;
};

class LargeUpload
{
public:
    LargeUpload(const Transfer& transfer, const SourceFile& source)
        : m_Transfer(transfer),
          m_Box(transfer.box),
          m_Source(source),
          m_Progress(transfer.progress),
          m_Digests(chunkCount(source.size()))
    {
    }

    void run(haulbox::BeginReq& request)
    {
        request.set_size(m_Source.size());
        request.set_keep_existing(m_Transfer.existing == Existing::Keep);
        Patience patience(m_Box.stallLimit());
        for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
            haulbox::BeginRsp begun;
            m_Box.ask(&BoxServices_Stub::begin, request, begun);
            for (; begun.status() == haulbox::BUSY; m_Box.ask(&BoxServices_Stub::begin, request, begun))
                patience.wait(begun.other_bytes());
            if (begun.status() == haulbox::KEPT) {
                ++m_Transfer.tally.filesKept;
                return m_Progress.add(m_Source.size());
            }
            BoxClient::require(begun);
            try {
                return send(begun);
            } catch (const HandleEnded&) {
                m_Progress.restart(); // another upload has taken the place of this one
            }
        }
        throw TransferFailure(kBusy, "other transfers write to the target again and again");
    }

private:
    void send(const haulbox::BeginRsp& begun)
    {
        const std::vector<bool> missing = missingChunks(begun);
        forEachRun(missing, divisionFor(m_Box, missing),
                   [&](std::uint64_t first, std::uint32_t count) { writeRun(begun.upload(), first, count); });
        m_Source.requireUnchanged();
        haulbox::FinishReq finish;
        finish.set_upload(begun.upload());
        finish.set_digest(toBytes(digestOf(m_Digests)));
        haulbox::FinishRsp finished;
        m_Box.askForSure(&BoxServices_Stub::finish, finish, finished);
        m_Transfer.tally.filesKept += finished.kept() ? 1 : 0;
    }

    /// Returns the chunks that the box has neither from an earlier attempt nor in the old target.
    std::vector<bool> missingChunks(const haulbox::BeginRsp& begun)
    {
        if (begun.found_size() > m_Source.size())
            throw TransferFailure(kNotUnderstood, "the box found more bytes than the file has");
        Comparison comparison;
        comparison.chunks = chunkCount(begun.found_size());
        comparison.theirs = [&](std::uint64_t first, std::uint32_t count) {
            haulbox::DigestsReq request;
            request.set_upload(begun.upload());
            request.set_first_chunk(first);
            request.set_chunks(count);
            return m_Box.digests(request);
        };
        comparison.ours = [&](std::uint64_t chunk) {
            std::string data;
            m_Source.read(chunk, data);
            return m_Digests[chunk] = digestOf(data);
        };
        comparison.same = [&](std::uint64_t chunk, const Digest&) {
            m_Progress.add(chunkLength(m_Source.size(), chunk));
        };
        std::vector<bool> missing = differingChunks(comparison, m_Digests.size(), m_Transfer.chunksInFlight);
        if (begun.found_whole() && isAny(missing))
            missing.assign(missing.size(), true);
        return missing;
    }

    /// The next chunk is read while one is sent.
    void writeRun(const std::string& upload, std::uint64_t first, std::uint32_t count)
    {
        wirecall::RpcController controller;
        controller.SetStallLimit(m_Box.stallLimit());
        wirecall::StreamWriter writer(m_Box.channel(), BoxClient::method("write"), controller);
        haulbox::Chunk head;
        head.set_upload(upload);
        std::uint64_t chunk = first;
        std::uint64_t bytes = 0;
        for (; chunk < first + count; ++chunk) {
            const std::size_t length = chunkLength(m_Source.size(), chunk);
            wirecall::OutgoingBuffer data(length);
            m_Source.read(chunk, data.data());
            m_Digests[chunk] = digestOf(data.data(), length);
            head.set_offset(chunk * kChunkSize);
            head.set_digest(toBytes(m_Digests[chunk]));
            if (!writer.write(head, std::move(data)))
                break;
            head.clear_upload();
            bytes += length;
            m_Progress.add(length);
        }
        haulbox::WriteRsp response;
        if (!writer.finish(response))
            BoxClient::fail(controller);
        BoxClient::require(response);
        if (chunk != first + count)
            throw TransferFailure(kNotUnderstood, "the box ended the stream early");
        m_Transfer.tally.bytesMoved += bytes;
    }

    const Transfer& m_Transfer;
    BoxClient& m_Box;
    const SourceFile& m_Source;
    FileProgress m_Progress;
    std::vector<Digest> m_Digests;
};

} // namespace

void uploadLarge(const Transfer& transfer, const SourceFile& source, haulbox::BeginReq target)
{
    LargeUpload(transfer, source).run(target);
}

} // namespace bulkhaul
