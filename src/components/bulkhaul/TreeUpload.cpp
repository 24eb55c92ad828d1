#include "components/bulkhaul/TreeUpload.h"

#include "components/bulkhaul/LargeUpload.h"
#include "components/bulkhaul/Parallel.h"
#include "components/bulkhaul/StoreRequest.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/TreeWalk.h"

#include <cstdint>
#include <vector>

namespace bulkhaul {

namespace {

using haulbox::BoxServices_Stub;

/// The number of batches of small files, and of large files, that are collected before they are sent
/// together.
constexpr std::size_t kBatchesAtOnce = 64;
constexpr std::size_t kLargeAtOnce = 64;
constexpr std::size_t kMostRemembered = 20000;

class TreeUpload
{
public:
    TreeUpload(const Transfer& transfer, const Folder& root)
        : m_Transfer(transfer), m_Box(transfer.box), m_Root(root)
    {
    }

    void run(const std::string& boxPath)
    {
        measure();
        makeTarget(boxPath);
        for (const Pending& pending : m_First)
            take(pending);
        if (!m_FirstIsAll)
            walkTree(m_Root, Strange::Fail, m_First.back().below, [this](const TreeItem& item) {
                take({item.below, item.folder, item.size});
                return true;
            });
        moveCollected();
        reserve(); // no more names
    }

private:
    struct Pending
    {
        std::string below;
        bool folder;
        std::uint64_t size;
    };
    typedef std::vector<Pending> Batch;

    /// Finds the total, and whether the whole tree can be moved, so that no part of it is moved if it can't.
    /// Remembers the first items, so that few trees are walked through twice.
    void measure()
    {
        std::uint64_t weight = weightOf(0);
        walkTree(m_Root, Strange::Fail, std::string(), [&](const TreeItem& item) {
            weight += weightOf(item.size);
            m_FirstIsAll = m_First.size() < kMostRemembered;
            if (m_FirstIsAll)
                m_First.push_back({item.below, item.folder, item.size});
            return true;
        });
        m_Transfer.progress.setTotal(weight);
    }

    void makeTarget(const std::string& boxPath)
    {
        haulbox::StoreReq request;
        *request.mutable_carried() = m_Box.carried();
        request.set_path(boxPath);
        request.add_items()->set_folder(true);
        haulbox::StoreRsp response;
        m_Box.askForSure(&BoxServices_Stub::store, request, response);
        m_Handle = response.transfer();
        m_Probing = response.existed();
    }

    void take(const Pending& item)
    {
        collect(item);
        if (m_Batches.size() > kBatchesAtOnce || m_Large.size() >= kLargeAtOnce)
            moveCollected();
    }

    void collect(const Pending& item)
    {
        haulbox::Entry& name = *m_Names.add_entries();
        name.set_below(item.below);
        name.set_folder(item.folder);
        if (item.size > kChunkSize) {
            m_Large.push_back(item.below);
            return;
        }
        if (m_Batches.empty() || m_Batches.back().size() >= kFilesInBatch ||
            m_LastBytes + item.size > kBytesInBatch) {
            m_Batches.emplace_back();
            m_LastBytes = 0;
        }
        m_Batches.back().push_back(item);
        m_LastBytes += item.size;
    }

    /// Announces the names of what is moved next, so that of two clients with crossed names only one fails.
    void reserve()
    {
        if (!m_Reserves)
            return;
        m_Names.set_transfer(m_Handle);
        haulbox::ReserveRsp response;
        try {
            m_Box.askForSure(&BoxServices_Stub::reserve, m_Names, response);
        } catch (const NotOffered&) {
            m_Reserves = false;
        }
        m_Names.Clear();
    }

    void moveCollected()
    {
        reserve();
        inParallel(
            {{m_Transfer.filesInFlight, m_Batches.size(), [&](std::uint64_t i) { moveBatch(m_Batches[i]); }},
             {largeFilesInFlight(m_Transfer), m_Large.size(),
              [&](std::uint64_t i) { moveLarge(m_Large[i]); }}});
        m_Batches.clear();
        m_Large.clear();
    }

    void moveLarge(const std::string& below)
    {
        FolderCache folders(m_Root, Folder::Missing::Fail);
        std::string name;
        const SourceFile source(folders.parentOf(below, name), name, SourceFile::Links::Follow);
        haulbox::BeginReq request;
        request.set_transfer(m_Handle);
        request.set_below(below);
        uploadLarge(m_Transfer, source, request);
        m_Transfer.progress.add(weightOf(0));
    }

    haulbox::StoreReq storeRequest() const
    {
        haulbox::StoreReq request;
        request.set_transfer(m_Handle);
        request.set_keep_existing(m_Transfer.existing == Existing::Keep);
        return request;
    }

    void moveBatch(const Batch& batch)
    {
        haulbox::StoreReq request = storeRequest();
        FolderCache folders(m_Root, Folder::Missing::Fail);
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
            fillItem(item, pending.below, source);
        }
        if (m_Probing)
            storeWanted(request);
        else
            store(m_Transfer, request);
        m_Transfer.progress.add(weight);
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
        m_Transfer.tally.filesKept += response.kept();
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
        store(m_Transfer, rest);
    }

    const Transfer& m_Transfer;
    BoxClient& m_Box;
    const Folder& m_Root;
    std::string m_Handle;
    std::vector<Pending> m_First; ///< items of the tree
    bool m_FirstIsAll = true;
    bool m_Probing = false; ///< the target existed before
    std::vector<Batch> m_Batches;
    std::uint64_t m_LastBytes = 0; ///< in the last batch
    std::vector<std::string> m_Large;
    haulbox::ReserveReq m_Names; ///< of what is collected
    bool m_Reserves = true;      ///< the box, as far as is known
};

} // namespace

void uploadTree(const Transfer& transfer, const Folder& root, const std::string& boxPath)
{
    TreeUpload(transfer, root).run(boxPath);
}

} // namespace bulkhaul
