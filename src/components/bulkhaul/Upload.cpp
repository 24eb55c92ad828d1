#include "components/bulkhaul/FileFailure.h"
#include "components/bulkhaul/Parallel.h"
#include "components/bulkhaul/SourceFile.h"
#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/TreeWalk.h"

#include <algorithm>
#include <cstdint>

namespace bulkhaul {

namespace {

using haulbox::BoxServices_Stub;

/// The number of batches of small files that are collected before they are sent together.
constexpr std::size_t kBatchesAtOnce = 64;

class Uploader
{
public:
    Uploader(const Transfer& transfer, const std::string& boxPath)
        : m_Transfer(transfer), m_Box(transfer.box), m_Tally(transfer.tally), m_BoxPath(boxPath)
    {
    }

    void run(const std::string& localPath)
    {
        struct stat status;
        if (::stat(localPath.c_str(), &status) != 0)
            throwErrno(haulbox::UNREADABLE, localPath);
        if (S_ISDIR(status.st_mode))
            moveTree(Folder::open(localPath));
        else
            moveFile(localPath);
    }

private:
    struct Pending
    {
        std::string below;
        bool folder;
        std::uint64_t size;
    };
    typedef std::vector<Pending> Batch;

    void moveFile(const std::string& localPath)
    {
        const std::size_t slash = localPath.rfind('/');
        const Folder folder = Folder::open(slash == std::string::npos ? "." : localPath.substr(0, slash + 1));
        const std::string name = slash == std::string::npos ? localPath : localPath.substr(slash + 1);
        const SourceFile source(folder, name, SourceFile::Links::Follow);
        m_Transfer.progress.setTotal(weightOf(source.size()));
        if (source.size() > kChunkSize)
            return moveLargeFile(source, std::string());
        haulbox::StoreReq request = storeRequest();
        fill(*request.add_items(), std::string(), source);
        store(request);
    }

    haulbox::StoreReq storeRequest() const
    {
        haulbox::StoreReq request;
        *request.mutable_carried() = m_Box.carried();
        request.set_path(m_BoxPath);
        request.set_keep_existing(m_Transfer.existing == Existing::Keep);
        return request;
    }

    static void fill(haulbox::Item& item, const std::string& below, const SourceFile& source)
    {
        if (!below.empty())
            item.set_below(below);
        source.read(0, *item.mutable_data());
        item.set_digest(toBytes(digestOf(item.data())));
    }

    /// `below` is empty where the target itself is the file.
    void moveLargeFile(const SourceFile& source, const std::string& below)
    {
        haulbox::BeginReq begin;
        *begin.mutable_carried() = m_Box.carried();
        begin.set_path(m_BoxPath);
        if (!below.empty())
            begin.set_below(below);
        begin.set_size(source.size());
        begin.set_keep_existing(m_Transfer.existing == Existing::Keep);
        haulbox::BeginRsp begun;
        m_Box.ask(&BoxServices_Stub::begin, begin, begun);
        if (begun.status() == haulbox::KEPT) {
            ++m_Tally.filesKept;
            return m_Transfer.progress.add(source.size());
        }
        BoxClient::require(begun);

        std::vector<Digest> digests(chunkCount(source.size()));
        const std::vector<bool> missing = missingChunks(source, begun, digests);
        inParallel(m_Transfer.chunksInFlight, missing.size(), [&](std::uint64_t chunk) {
            if (!missing[chunk])
                return;
            haulbox::WriteReq request;
            request.set_upload(begun.upload());
            request.set_offset(chunk * kChunkSize);
            source.read(chunk, *request.mutable_data());
            digests[chunk] = digestOf(request.data());
            request.set_digest(toBytes(digests[chunk]));
            haulbox::WriteRsp response;
            m_Box.askForSure(&BoxServices_Stub::write, request, response);
            m_Tally.bytesMoved += request.data().size();
            m_Transfer.progress.add(request.data().size());
        });
        source.requireUnchanged();
        haulbox::FinishReq finish;
        finish.set_upload(begun.upload());
        finish.set_digest(toBytes(digestOf(digests)));
        haulbox::FinishRsp finished;
        m_Box.askForSure(&BoxServices_Stub::finish, finish, finished);
        m_Tally.filesKept += finished.kept() ? 1 : 0;
    }

    /// Returns the chunks that the box has neither from an earlier attempt nor in the old target.
    std::vector<bool> missingChunks(const SourceFile& source, const haulbox::BeginRsp& begun,
                                    std::vector<Digest>& digests)
    {
        if (begun.found_size() > source.size())
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
            source.read(chunk, data);
            digests[chunk] = digestOf(data);
            return digests[chunk];
        };
        comparison.same = [&](std::uint64_t chunk, const Digest&) {
            m_Transfer.progress.add(chunkLength(source.size(), chunk));
        };
        std::vector<bool> missing = differingChunks(comparison, digests.size(), m_Transfer.chunksInFlight);
        if (begun.found_whole() && isAny(missing))
            missing.assign(missing.size(), true);
        return missing;
    }

    void moveTree(const Folder& root)
    {
        // The first walk moves nothing. It finds the total, and whether the whole tree can be moved, so that
        // no part of it is moved if it can't.
        std::uint64_t weight = weightOf(0);
        walkTree(root, Strange::Fail, std::string(), [&](const TreeItem& item) {
            weight += weightOf(item.size);
            return true;
        });
        m_Transfer.progress.setTotal(weight);

        haulbox::StoreReq request = storeRequest();
        request.add_items()->set_folder(true);
        haulbox::StoreRsp response;
        m_Box.askForSure(&BoxServices_Stub::store, request, response);
        m_Probing = response.existed();

        std::vector<Batch> batches;
        std::uint64_t bytes = 0;
        walkTree(root, Strange::Fail, std::string(), [&](const TreeItem& item) {
            if (item.size > kChunkSize) {
                moveLargeItem(root, item.below);
                return true;
            }
            if (batches.empty() || batches.back().size() >= kFilesInBatch ||
                bytes + item.size > kBytesInBatch) {
                if (batches.size() >= kBatchesAtOnce)
                    moveBatches(root, batches);
                batches.emplace_back();
                bytes = 0;
            }
            batches.back().push_back({item.below, item.folder, item.size});
            bytes += item.size;
            return true;
        });
        moveBatches(root, batches);
    }

    void moveLargeItem(const Folder& root, const std::string& below)
    {
        FolderCache folders(root, Folder::Missing::Fail);
        std::string name;
        const SourceFile source(folders.parentOf(below, name), name, SourceFile::Links::Follow);
        moveLargeFile(source, below);
        m_Transfer.progress.add(weightOf(0));
    }

    void moveBatches(const Folder& root, std::vector<Batch>& batches)
    {
        inParallel(m_Transfer.filesInFlight, batches.size(),
                   [&](std::uint64_t i) { moveBatch(root, batches[i]); });
        batches.clear();
    }

    void moveBatch(const Folder& root, const Batch& batch)
    {
        haulbox::StoreReq request = storeRequest();
        FolderCache folders(root, Folder::Missing::Fail);
        std::uint64_t weight = 0;
        for (const Pending& pending : batch) {
            haulbox::Item& item = *request.add_items();
            weight += weightOf(pending.size);
            if (pending.folder) {
                item.set_below(pending.below);
                item.set_folder(true);
                continue;
            }
            std::string name;
            const SourceFile source(folders.parentOf(pending.below, name), name, SourceFile::Links::Follow);
            if (source.size() > kChunkSize)
                throw FileFailure(haulbox::CHANGED,
                                  pending.below + ": became larger while the folder was moved");
            fill(item, pending.below, source);
        }
        m_Probing ? storeWanted(request) : store(request);
        m_Transfer.progress.add(weight);
    }

    void store(const haulbox::StoreReq& request)
    {
        haulbox::StoreRsp response;
        m_Box.askForSure(&BoxServices_Stub::store, request, response);
        if (!response.wanted().empty())
            throw TransferFailure(kNotUnderstood, "the box asked for data that it was sent");
        m_Tally.filesKept += response.kept();
        for (const haulbox::Item& item : request.items())
            m_Tally.bytesMoved += item.data().size();
    }

    /// Sends the digests first, then the files that the box does not have. An earlier attempt may have moved
    /// most of them.
    void storeWanted(haulbox::StoreReq& request)
    {
        haulbox::StoreReq question = storeRequest();
        for (const haulbox::Item& item : request.items()) {
            haulbox::Item& asked = *question.add_items();
            asked.set_below(item.below());
            asked.set_folder(item.folder());
            if (!item.folder()) {
                asked.set_digest(item.digest());
                asked.set_size(item.data().size());
            }
        }
        haulbox::StoreRsp response;
        m_Box.askForSure(&BoxServices_Stub::store, question, response);
        m_Tally.filesKept += response.kept();
        if (response.wanted().empty())
            return;
        haulbox::StoreReq rest = storeRequest();
        std::int64_t last = -1;
        for (const std::uint32_t wanted : response.wanted()) {
            if (wanted <= last || wanted >= static_cast<std::uint32_t>(request.items_size()))
                throw TransferFailure(kNotUnderstood, "the box asked for a file that was not offered");
            last = wanted;
            rest.add_items()->Swap(request.mutable_items(static_cast<int>(wanted)));
        }
        store(rest);
    }

    const Transfer& m_Transfer;
    BoxClient& m_Box;
    Tally& m_Tally;
    const std::string m_BoxPath;
    bool m_Probing = false; ///< the target existed before
};

} // namespace

void upload(const Transfer& transfer, const std::string& boxPath, const std::string& localPath)
{
    Uploader(transfer, boxPath).run(localPath);
}

} // namespace bulkhaul
