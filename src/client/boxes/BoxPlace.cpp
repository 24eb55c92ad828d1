#include "lumo/client/BoxPlace.h"

#include "client/TransferEnds.h"
#include "client/TransferState.h"
#include "client/boxes/BoxAccess.h"
#include "lumo/client/Catalogue.h"
#include "lumo/components/bulkhaul/BoxTree.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace lumo {

using internal::BoxAccess;
using internal::Call;

namespace {

/// Without a "/" at its end; a path of another system than the box's has "\" between names.
std::string plainBoxPath(std::string path)
{
    if (path.empty() || path.front() != '/')
        std::replace(path.begin(), path.end(), '\\', '/');
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// The path of an entry on its box: the root of its disk, and the names below.
std::string boxPathOf(const Catalogue& catalogue, const Entry& entry, const Entry& disk)
{
    const Entry::Text path = catalogue.pathOf(entry);
    if (!path || !disk.root)
        throw Error(Error::Kind::NotFound, "a name on its path is too long for a record");
    const std::size_t below = path->find('/', 1); // after the name of the disk
    std::string root = plainBoxPath(*disk.root);
    if (below == std::string::npos)
        return root;
    if (root == "/")
        root.clear();
    return root + path->substr(below);
}

Error failedRequest(int code, const std::string& reason)
{
    const bool isLost = code == bulkhaul::kNoConnection || code == bulkhaul::kStalled;
    return {code == bulkhaul::kNotFound ? Error::Kind::NotFound
            : isLost                    ? Error::Kind::NoAnswer
                                        : Error::Kind::Refused,
            "the storage box: " + reason,
            {},
            reason};
}

Transfer::Outcome outcomeOf(int code, const internal::EndSum& end)
{
    Transfer::Outcome outcome;
    if (code != bulkhaul::kDone)
        outcome = internal::failureOf(code, end.reason);
    outcome.keptFiles = end.filesKept;
    outcome.movedBytes = end.bytesMoved;
    return outcome;
}

/// Runs a transfer, a function of its progress function.
Transfer::Outcome moved(const BoxPlace::Percent& percent,
                        const std::function<int(const bulkhaul::ProgressFunction&)>& move)
{
    internal::TransferEnds& ends = internal::TransferEnds::instance();
    internal::EndSum end;
    ends.take(); // of what this thread did before
    if (!percent) {
        const int code = move({});
        return outcomeOf(code, ends.take());
    }
    // The last call brings the end; it returns before the transfer does.
    const int code = move([&](const std::string&, int result, int share) {
        if (result != bulkhaul::kDone || share == 100)
            end = ends.take();
        percent(share);
    });
    return outcomeOf(code, end);
}

} // namespace

BoxPlace::BoxPlace(std::shared_ptr<BoxAccess> access, std::string path)
    : m_Access(std::move(access)), m_Path(std::move(path))
{
}

BoxPlace BoxPlace::below(const std::string& path) const
{
    if (path.empty())
        return *this;
    return BoxPlace(m_Access, m_Path + (m_Path.empty() || m_Path.back() != '/' ? "/" : "") + path);
}

std::vector<BoxPlace::Item> BoxPlace::list() const
{
    std::vector<Item> items;
    std::string reason;
    const auto take = [&items](const bulkhaul::BoxEntry& entry) {
        items.push_back({entry.below, entry.folder, entry.size, entry.version});
    };
    const int code = bulkhaul::List(m_Access->channel(), m_Path, &m_Access->toRead(), take, reason);
    if (code != bulkhaul::kDone)
        throw failedRequest(code, reason);
    return items;
}

std::vector<bool> BoxPlace::compare(const std::vector<Item>& files, const std::string& local) const
{
    std::vector<bulkhaul::BoxEntry> entries;
    entries.reserve(files.size());
    for (const Item& file : files)
        entries.push_back({file.path, false, file.bytes, file.version});
    std::vector<bool> same;
    std::string reason;
    const int code =
        bulkhaul::Compare(m_Access->channel(), m_Path, local, &m_Access->toRead(), entries, same, reason);
    if (code != bulkhaul::kDone)
        throw failedRequest(code, reason);
    return same;
}

Transfer::Outcome BoxPlace::get(const std::string& local, bool overwrite, const Percent& percent) const
{
    return moved(percent, [&](const bulkhaul::ProgressFunction& progress) {
        return bulkhaul::Download(m_Access->channel(), m_Path, local, !overwrite, progress,
                                  &m_Access->toRead(), nullptr);
    });
}

Transfer::Outcome BoxPlace::put(const std::string& local, bool overwrite, const Percent& percent) const
{
    return moved(percent, [&](const bulkhaul::ProgressFunction& progress) {
        return bulkhaul::Upload(m_Access->channel(), m_Path, local, !overwrite, progress,
                                &m_Access->toWrite(), nullptr);
    });
}

BoxPlace Transfers::at(const Entry& entry) const
{
    const Catalogue catalogue(m_Link);
    const Entry disk = catalogue.diskOf(entry);
    if (!disk.box || disk.box->empty())
        throw Error(Error::Kind::NotFound, "its disk is on no storage box, so that its files can't be moved");
    const std::string path = boxPathOf(catalogue, entry, disk);
    const FolderId folder = entry.kind == Entry::Kind::File ? entry.parent : catalogue.folderOf(entry);
    const Call call(*m_Link);
    const std::string address = call->getKestaIP(QString::fromStdString(*disk.box)).toStdString();
    if (address.empty() && Call::refused())
        internal::notFound("the centre knows no storage box '" + *disk.box + "'");
    call.require(!address.empty());
    return BoxPlace(std::make_shared<BoxAccess>(call, address, folder), path);
}

bool Transfer::Outcome::mayPass() const
{
    return connectionLost() || code == bulkhaul::kBusy;
}

bool Transfer::Outcome::connectionLost() const
{
    return code == bulkhaul::kNoConnection || code == bulkhaul::kStalled;
}

} // namespace lumo
