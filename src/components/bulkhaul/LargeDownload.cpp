#include "components/bulkhaul/LargeDownload.h"

#include "components/bulkhaul/Conveyor.h"
#include "components/bulkhaul/files/IncomingFile.h"
#include "components/wirecall/Streams.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace bulkhaul {

namespace {

/// The number of chunks that wait to be verified and written, of all streams of a file together and whatever
/// the settings. They are in memory.
constexpr int kMostWaiting = 4;

class LargeDownload
{
public:
    LargeDownload(const Transfer& transfer, const LargeSource& source, const Folder& folder,
                  const std::string& name)
        : m_Transfer(transfer),
          m_Box(transfer.box),
          m_Source(source),
          m_File(folder.below(std::vector<std::string>()), name, source.size, transfer.existing,
                 waitingOf(transfer))
    {
    }

    void run()
    {
        const std::vector<bool> missing = missingChunks();
        const Division division = divisionFor(m_Box, missing);
        const int waiting = std::max(1, std::min(kMostWaiting, m_Transfer.chunksInFlight) / division.streams);
        forEachRun(missing, division, [this, waiting](std::uint64_t first, std::uint32_t count) {
            readRun(first, count, static_cast<std::size_t>(waiting));
        });
        requireWhole();
        m_Transfer.tally.filesKept += m_File.finish() ? 0 : 1;
    }

private:
    struct Arrived
    {
        std::uint64_t chunk;
        std::string digest;
        wirecall::Payload data;
    };

    /// Returns the chunks that neither an earlier attempt nor the old target has.
    std::vector<bool> missingChunks()
    {
        Comparison comparison;
        comparison.chunks = chunkCount(m_File.foundSize());
        comparison.theirs = [&](std::uint64_t first, std::uint32_t count) {
            haulbox::DigestsReq request = digestsRequest();
            request.set_first_chunk(first);
            request.set_chunks(count);
            return m_Box.digests(request);
        };
        comparison.ours = [&](std::uint64_t chunk) { return m_File.foundDigest(chunk); };
        comparison.same = [&](std::uint64_t chunk, const Digest& digest) {
            m_File.keep(chunk, digest);
            m_Transfer.progress.add(chunkLength(m_Source.size, chunk));
        };
        std::vector<bool> missing =
            differingChunks(comparison, chunkCount(m_Source.size), m_Transfer.chunksInFlight);
        if (m_File.found() == IncomingFile::Found::Target && isAny(missing))
            missing.assign(missing.size(), true);
        return missing;
    }

    /// This thread receives, another one verifies and writes.
    void readRun(std::uint64_t first, std::uint32_t count, std::size_t waiting)
    {
        Conveyor<Arrived> conveyor(waiting, [this](Arrived& arrived) { take(arrived); });
        haulbox::RunReq request;
        request.set_transfer(m_Source.transfer);
        if (!m_Source.below.empty())
            request.set_below(m_Source.below);
        request.set_version(m_Source.version);
        request.set_first_chunk(first);
        request.set_chunks(count);
        wirecall::RpcController controller;
        controller.SetStallLimit(m_Box.stallLimit());
        wirecall::StreamReader reader(m_Box.channel(), BoxClient::method("read"), controller, request);
        haulbox::Chunk head;
        wirecall::Payload data;
        std::uint64_t next = first;
        while (reader.read(head, data)) {
            BoxClient::require(head);
            if (next == first + count || head.offset() != next * kChunkSize ||
                data.size() != chunkLength(m_Source.size, next))
                throw TransferFailure(kCorrupted,
                                      m_Source.path + ": not as many bytes arrived as were declared");
            if (!conveyor.put({next++, head.digest(), std::move(data)}))
                break;
        }
        conveyor.finish(); // throws what failed there
        if (controller.Failed())
            BoxClient::fail(controller);
        if (next != first + count)
            throw TransferFailure(kNotUnderstood, m_Source.path + ": the box ended the stream early");
    }

    void take(const Arrived& arrived)
    {
        const Pieces& data = arrived.data.pieces();
        m_File.write(arrived.chunk, data, verified(data, arrived.digest, m_Source.path));
        m_Transfer.tally.bytesMoved += arrived.data.size();
        m_Transfer.progress.add(arrived.data.size());
    }

    /// Throws TransferFailure unless the whole file equals the box's file, which the box still has.
    void requireWhole()
    {
        haulbox::DigestsReq request = digestsRequest();
        request.set_whole(true);
        haulbox::DigestsRsp response;
        m_Box.askForSure(&haulbox::BoxServices_Stub::digests, request, response);
        if (!isDigest(response.digests(), m_File.wholeDigest()))
            throw TransferFailure(kCorrupted,
                                  m_Source.path + ": the file that arrived is not the file that was sent");
    }

    haulbox::DigestsReq digestsRequest() const
    {
        haulbox::DigestsReq request;
        request.set_transfer(m_Source.transfer);
        if (!m_Source.below.empty())
            request.set_below(m_Source.below);
        request.set_version(m_Source.version);
        return request;
    }

    const Transfer& m_Transfer;
    BoxClient& m_Box;
    const LargeSource& m_Source;
    IncomingFile m_File;
};

} // namespace

void downloadLarge(const Transfer& transfer, const LargeSource& source, const Folder& folder,
                   const std::string& name)
{
    if (source.size > kLargestFile)
        throw TransferFailure(kNotUnderstood,
                              source.path + ": too large, " + std::to_string(source.size) + " bytes");
    LargeDownload(transfer, source, folder, name).run();
}

} // namespace bulkhaul
