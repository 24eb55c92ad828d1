#include "components/bulkhaul/FileFailure.h"
#include "components/bulkhaul/IncomingFile.h"
#include "components/bulkhaul/IncomingSmallFiles.h"
#include "components/bulkhaul/Parallel.h"
#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/TreeWalk.h"

#include <algorithm>

namespace bulkhaul {

namespace {

using haulbox::BoxServices_Stub;

class Downloader
{
public:
    Downloader(const Transfer& transfer, const std::string& boxPath)
        : m_Transfer(transfer), m_Box(transfer.box), m_Tally(transfer.tally), m_BoxPath(boxPath)
    {
    }

    void run(const std::string& localPath)
    {
        const auto [parent, name] = splitPath(localPath);
        const Folder folder = Folder::open(parent, haulbox::NOT_WRITABLE);
        const bool keep = m_Transfer.existing == Existing::Keep && isFileOrLink(folder, name);
        if (keep && m_Transfer.sourceIsFile) {
            ++m_Tally.filesKept;
            return;
        }
        haulbox::ReadRsp first;
        m_Box.askForSure(&BoxServices_Stub::read, readRequest(m_BoxPath, 0, std::string()), first);
        if (first.folder())
            moveTree(folder.below(name, Folder::Missing::Make));
        else if (keep)
            ++m_Tally.filesKept;
        else
            moveFile(folder, name, first);
    }

private:
    haulbox::ReadReq readRequest(const std::string& path, std::uint64_t chunk,
                                 const std::string& version) const
    {
        haulbox::ReadReq request;
        *request.mutable_carried() = m_Box.carried();
        request.set_path(path);
        request.set_offset(chunk * kChunkSize);
        if (!version.empty())
            request.set_version(version);
        return request;
    }

    void moveFile(const Folder& folder, const std::string& name, const haulbox::ReadRsp& first)
    {
        m_Transfer.progress.setTotal(weightOf(first.size()));
        if (first.size() > kChunkSize)
            return moveLargeFile(folder, name, m_BoxPath, first.size(), first.version());
        requireChunk(first, first.size(), 0, m_BoxPath);
        m_Tally.filesKept += putFile(folder, name, first.data(), m_Transfer.existing) ? 0 : 1;
        m_Tally.bytesMoved += first.data().size();
    }

    static Digest requireChunk(const haulbox::ReadRsp& response, std::uint64_t size, std::uint64_t chunk,
                               const std::string& path)
    {
        if (response.size() != size || response.data().size() != chunkLength(size, chunk))
            throw TransferFailure(kCorrupted, path + ": not as many bytes arrived as were declared");
        return verified(response.data(), response.digest(), path);
    }

    void moveLargeFile(const Folder& folder, const std::string& name, const std::string& path,
                       std::uint64_t size, const std::string& version)
    {
        if (size > kLargestFile)
            throw TransferFailure(kNotUnderstood, path + ": too large, " + std::to_string(size) + " bytes");
        IncomingFile file(folder.below(std::vector<std::string>()), name, size, m_Transfer.existing);
        const std::vector<bool> missing = missingChunks(file, path, size, version);
        inParallel(m_Transfer.chunksInFlight, missing.size(), [&](std::uint64_t chunk) {
            if (!missing[chunk])
                return;
            haulbox::ReadRsp response;
            m_Box.askForSure(&BoxServices_Stub::read, readRequest(path, chunk, version), response);
            const Digest digest = requireChunk(response, size, chunk, path);
            file.write(chunk, piecesOf(response.data()), digest);
            m_Tally.bytesMoved += response.data().size();
            m_Transfer.progress.add(response.data().size());
        });
        requireWhole(file, path, version);
        m_Tally.filesKept += file.finish() ? 0 : 1;
    }

    haulbox::DigestsReq digestsRequest(const std::string& path, const std::string& version) const
    {
        haulbox::DigestsReq request;
        *request.mutable_carried() = m_Box.carried();
        request.set_path(path);
        request.set_version(version);
        return request;
    }

    /// Returns the chunks that neither an earlier attempt nor the old target has.
    std::vector<bool> missingChunks(IncomingFile& file, const std::string& path, std::uint64_t size,
                                    const std::string& version)
    {
        Comparison comparison;
        comparison.chunks = chunkCount(file.foundSize());
        comparison.theirs = [&](std::uint64_t first, std::uint32_t count) {
            haulbox::DigestsReq request = digestsRequest(path, version);
            request.set_first_chunk(first);
            request.set_chunks(count);
            return m_Box.digests(request);
        };
        comparison.ours = [&](std::uint64_t chunk) { return file.foundDigest(chunk); };
        comparison.same = [&](std::uint64_t chunk, const Digest& digest) {
            file.keep(chunk, digest);
            m_Transfer.progress.add(chunkLength(size, chunk));
        };
        std::vector<bool> missing = differingChunks(comparison, chunkCount(size), m_Transfer.chunksInFlight);
        if (file.found() == IncomingFile::Found::Target && isAny(missing))
            missing.assign(missing.size(), true);
        return missing;
    }

    /// Throws TransferFailure unless the whole file equals the box's file, which the box still has.
    void requireWhole(const IncomingFile& file, const std::string& path, const std::string& version)
    {
        haulbox::DigestsReq request = digestsRequest(path, version);
        request.set_whole(true);
        haulbox::DigestsRsp response;
        m_Box.askForSure(&BoxServices_Stub::digests, request, response);
        if (!isDigest(response.digests(), file.wholeDigest()))
            throw TransferFailure(kCorrupted, path + ": the file that arrived is not the file that was sent");
    }

    void moveTree(const Folder& root)
    {
        haulbox::ListRsp page;
        list(std::string(), page);
        m_Transfer.progress.setTotal(weightFrom(page));
        for (;;) {
            moveEntries(root, page);
            if (!page.more())
                return;
            const std::string after = page.entries(page.entries_size() - 1).below();
            list(after, page);
        }
    }

    void list(const std::string& after, haulbox::ListRsp& page)
    {
        haulbox::ListReq request;
        *request.mutable_carried() = m_Box.carried();
        request.set_path(m_BoxPath);
        if (!after.empty())
            request.set_after(after);
        m_Box.askForSure(&BoxServices_Stub::list, request, page);
        std::string last = after;
        for (const haulbox::Entry& entry : page.entries()) {
            // A list in any other order might never end.
            if (!last.empty() && !comesBefore(last, entry.below()))
                throw TransferFailure(kNotUnderstood, "the box listed entries out of order");
            last = entry.below();
        }
        if (page.more() && page.entries().empty())
            throw TransferFailure(kNotUnderstood, "the box announced more entries but sent none");
    }

    /// Returns the weight of the whole tree, whose first page is `first`.
    std::uint64_t weightFrom(const haulbox::ListRsp& first)
    {
        std::uint64_t weight = 0;
        haulbox::ListRsp page;
        const haulbox::ListRsp* each = &first;
        for (;;) {
            for (const haulbox::Entry& entry : each->entries())
                weight += weightOf(entry.size());
            if (!each->more())
                return weight;
            const std::string after = each->entries(each->entries_size() - 1).below();
            list(after, page);
            each = &page;
        }
    }

    typedef std::vector<const haulbox::Entry*> Batch;

    void moveEntries(const Folder& root, const haulbox::ListRsp& page)
    {
        std::vector<Batch> batches;
        std::vector<const haulbox::Entry*> large;
        std::uint64_t bytes = 0;
        for (const haulbox::Entry& entry : page.entries()) {
            if (entry.folder()) {
                root.below(splitBelow(entry.below()), Folder::Missing::Make);
                m_Transfer.progress.add(weightOf(0));
            } else if (entry.size() > kChunkSize) {
                large.push_back(&entry);
            } else {
                if (batches.empty() || batches.back().size() >= kFilesInBatch ||
                    bytes + entry.size() > kBytesInBatch) {
                    batches.emplace_back();
                    bytes = 0;
                }
                batches.back().push_back(&entry);
                bytes += entry.size();
            }
        }
        inParallel(m_Transfer.filesInFlight, batches.size(),
                   [&](std::uint64_t i) { moveBatch(root, batches[i]); });
        for (const haulbox::Entry* entry : large)
            moveLargeEntry(root, *entry);
    }

    void moveBatch(const Folder& root, const Batch& batch)
    {
        IncomingSmallFiles files(root, IncomingSmallFiles::Names::Given, m_Transfer.existing);
        haulbox::FetchReq request;
        *request.mutable_carried() = m_Box.carried();
        request.set_path(m_BoxPath);
        for (const haulbox::Entry* entry : batch) {
            if (files.keeps(entry->below())) {
                m_Transfer.progress.add(weightOf(entry->size()));
                ++m_Tally.filesKept;
                continue;
            }
            haulbox::Entry& wanted = *request.add_entries();
            wanted = *entry;
            if (const auto digest = files.existingDigest(entry->below(), entry->size()))
                wanted.set_digest(toBytes(*digest));
        }
        if (request.entries().empty())
            return;
        haulbox::FetchRsp response;
        m_Box.ask(&BoxServices_Stub::fetch, request, response);
        if (response.status() == haulbox::DONE && response.contents_size() != request.entries_size())
            throw TransferFailure(kNotUnderstood, "the box did not send as many files as asked for");
        for (int i = 0; i < std::min(response.contents_size(), request.entries_size()); ++i)
            take(files, request.entries(i), response.contents(i));
        m_Tally.filesKept += files.finish(); // those that arrived are kept, also when the next one failed
        BoxClient::require(response);
    }

    void take(IncomingSmallFiles& files, const haulbox::Entry& wanted, const haulbox::Content& content)
    {
        m_Transfer.progress.add(weightOf(wanted.size()));
        if (!content.has_data() && wanted.has_digest() && content.digest() == wanted.digest())
            return; // the client has the file already
        if (content.data().size() != wanted.size())
            throw TransferFailure(kCorrupted, wanted.below() + ": the size is not the one that was listed");
        verified(content.data(), content.digest(), wanted.below());
        files.add(wanted.below(), content.data());
        m_Tally.bytesMoved += content.data().size();
    }

    void moveLargeEntry(const Folder& root, const haulbox::Entry& entry)
    {
        FolderCache folders(root, Folder::Missing::Make);
        std::string name;
        const Folder& folder = folders.parentOf(entry.below(), name);
        if (m_Transfer.existing == Existing::Keep && isFileOrLink(folder, name)) {
            ++m_Tally.filesKept;
            return m_Transfer.progress.add(weightOf(entry.size()));
        }
        moveLargeFile(folder, name, m_BoxPath + "/" + entry.below(), entry.size(), entry.version());
        m_Transfer.progress.add(weightOf(0));
    }

    const Transfer& m_Transfer;
    BoxClient& m_Box;
    Tally& m_Tally;
    const std::string m_BoxPath;
};

} // namespace

void download(const Transfer& transfer, const std::string& boxPath, const std::string& localPath)
{
    Downloader(transfer, boxPath).run(localPath);
}

} // namespace bulkhaul
