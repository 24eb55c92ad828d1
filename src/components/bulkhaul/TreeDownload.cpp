#include "components/bulkhaul/TreeDownload.h"

#include "components/bulkhaul/LargeDownload.h"
#include "components/bulkhaul/Listing.h"
#include "components/bulkhaul/Parallel.h"
#include "components/bulkhaul/files/IncomingSmallFiles.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace bulkhaul {

namespace {

using haulbox::BoxServices_Stub;

std::uint64_t weightOfAll(const haulbox::ListRsp& page)
{
    std::uint64_t weight = 0;
    for (const haulbox::Entry& entry : page.entries())
        weight += weightOf(entry.size());
    return weight;
}

class TreeDownload
{
public:
    TreeDownload(const Transfer& transfer, const std::string& handle, const std::string& boxPath,
                 const Folder& root, bool rootIsNew)
        : m_Transfer(transfer),
          m_Box(transfer.box),
          m_Tally(transfer.tally),
          m_Handle(handle),
          m_BoxPath(boxPath),
          m_Root(root),
          m_RootIsNew(rootIsNew)
    {
    }

    void run()
    {
        Listing listing(m_Box, m_Handle);
        haulbox::ListRsp page;
        listing.next(page);
        m_Transfer.progress.setTotal(weightOfAll(page) + weightOfRest(listing));
        do
            moveEntries(page);
        while (listing.next(page));
    }

private:
    typedef std::vector<const haulbox::Entry*> Batch;

    static std::uint64_t weightOfRest(Listing listing)
    {
        std::uint64_t weight = 0;
        for (haulbox::ListRsp page; listing.next(page);)
            weight += weightOfAll(page);
        return weight;
    }

    void moveEntries(const haulbox::ListRsp& page)
    {
        std::vector<Batch> batches;
        Batch large;
        std::uint64_t bytes = 0;
        for (const haulbox::Entry& entry : page.entries()) {
            if (entry.folder()) {
                m_Root.below(splitBelow(entry.below()), Folder::Missing::Make);
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
        inParallel(
            {{m_Transfer.filesInFlight, batches.size(), [&](std::uint64_t i) { moveBatch(batches[i]); }},
             {largeFilesInFlight(m_Transfer), large.size(), [&](std::uint64_t i) { moveLarge(*large[i]); }}});
    }

    void moveBatch(const Batch& batch)
    {
        IncomingSmallFiles files(m_Root, IncomingSmallFiles::Names::Given, m_Transfer.existing,
                                 waitingOf(m_Transfer));
        haulbox::FetchReq request;
        request.set_transfer(m_Handle);
        for (const haulbox::Entry* entry : batch) {
            if (files.keeps(entry->below())) {
                m_Transfer.progress.add(weightOf(entry->size()));
                ++m_Tally.filesKept;
                continue;
            }
            haulbox::Entry& wanted = *request.add_entries();
            wanted = *entry;
            if (m_RootIsNew)
                continue;
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
        verified(piecesOf(content.data()), content.digest(), wanted.below());
        files.add(wanted.below(), content.data());
        m_Tally.bytesMoved += content.data().size();
    }

    void moveLarge(const haulbox::Entry& entry)
    {
        FolderCache folders(m_Root, Folder::Missing::Make);
        std::string name;
        const Folder& folder = folders.parentOf(entry.below(), name);
        if (m_Transfer.existing == Existing::Keep && isFileOrLink(folder, name)) {
            ++m_Tally.filesKept;
            return m_Transfer.progress.add(weightOf(entry.size()));
        }
        downloadLarge(
            m_Transfer,
            {m_Handle, entry.below(), entry.size(), entry.version(), m_BoxPath + "/" + entry.below()}, folder,
            name);
        m_Transfer.progress.add(weightOf(0));
    }

    const Transfer& m_Transfer;
    BoxClient& m_Box;
    Tally& m_Tally;
    const std::string m_Handle;
    const std::string m_BoxPath;
    const Folder& m_Root;
    const bool m_RootIsNew; ///< so nothing is there to compare
};

} // namespace

void downloadTree(const Transfer& transfer, const std::string& handle, const std::string& boxPath,
                  const Folder& target, bool targetIsNew)
{
    TreeDownload(transfer, handle, boxPath, target, targetIsNew).run();
}

} // namespace bulkhaul
