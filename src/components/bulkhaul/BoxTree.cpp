#include "lumo/components/bulkhaul/BoxTree.h"

#include "components/bulkhaul/Listing.h"
#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/SourceFile.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>

namespace bulkhaul {

namespace {

using haulbox::BoxServices_Stub;

/// The limits of a request that compares small files: what differs is sent in full.
constexpr int kFilesInComparison = 256;
constexpr std::uint64_t kBytesInComparison = 4 * kChunkSize;
constexpr std::uint32_t kDigestsAtOnce = 64;

/// Calls `work`. Returns the Code of what it throws.
template <class Work>
int judged(std::string& reason, Work work)
{
    reason.clear();
    try {
        work();
        return kDone;
    } catch (const TransferFailure& failure) {
        reason = failure.what();
        return failure.code();
    } catch (const FileFailure& failure) {
        reason = failure.what();
        return codeOf(failure.status());
    } catch (const std::exception& exception) {
        reason = exception.what();
        return kFailedHere;
    }
}

haulbox::OpenRsp open(BoxClient& box, const std::string& path)
{
    haulbox::OpenReq request;
    *request.mutable_carried() = box.carried();
    request.set_path(path);
    haulbox::OpenRsp opened;
    box.askForSure(&BoxServices_Stub::open, request, opened);
    return opened;
}

/// Compares files below an open folder of the box with those below a local one.
class TreeComparison
{
public:
    TreeComparison(BoxClient& box, const std::string& transfer, const std::string& localPath)
        : m_Box(box), m_Transfer(transfer), m_LocalPath(localPath)
    {
    }

    std::vector<bool> run(const std::vector<BoxEntry>& files)
    {
        std::vector<bool> same(files.size(), false);
        haulbox::FetchReq small;
        small.set_transfer(m_Transfer);
        std::vector<std::size_t> places; // of the small files
        std::uint64_t bytes = 0;
        for (std::size_t i = 0; i < files.size(); ++i) {
            const auto source = opened(files[i]);
            if (!source)
                continue;
            if (files[i].size > kChunkSize) {
                same[i] = isSame(files[i], *source);
                continue;
            }
            add(small, files[i], *source);
            places.push_back(i);
            bytes += files[i].size;
            if (small.entries_size() >= kFilesInComparison || bytes >= kBytesInComparison) {
                ask(small, places, same);
                bytes = 0;
            }
        }
        ask(small, places, same);
        return same;
    }

private:
    /// The local file, if it can be read and has the same size.
    std::optional<SourceFile> opened(const BoxEntry& file) const
    {
        const std::string path = file.below.empty() ? m_LocalPath : m_LocalPath + "/" + file.below;
        const std::size_t slash = path.rfind('/');
        try {
            const Folder folder = Folder::open(slash == std::string::npos ? "." : path.substr(0, slash + 1));
            SourceFile source(folder, path.substr(slash + 1), SourceFile::Links::Follow);
            if (source.size() == file.size)
                return source;
        } catch (const FileFailure&) {
            return std::nullopt;
        }
        return std::nullopt;
    }

    static void add(haulbox::FetchReq& request, const BoxEntry& file, const SourceFile& source)
    {
        haulbox::Entry& entry = *request.add_entries();
        entry.set_below(file.below);
        entry.set_size(file.size);
        entry.set_version(file.version);
        std::string data;
        if (file.size > 0)
            source.read(0, data);
        entry.set_digest(toBytes(digestOf(data)));
    }

    /// Asks for the files of a request and empties it. A file that the box fails to read counts as different.
    void ask(haulbox::FetchReq& request, std::vector<std::size_t>& places, std::vector<bool>& same)
    {
        for (std::size_t begin = 0; request.entries_size() > 0;) {
            haulbox::FetchRsp response;
            m_Box.ask(&BoxServices_Stub::fetch, request, response);
            const int answered = std::min(response.contents_size(), request.entries_size());
            for (int i = 0; i < answered; ++i)
                same[places[begin + static_cast<std::size_t>(i)]] =
                    !response.contents(i).has_data() &&
                    response.contents(i).digest() == request.entries(i).digest();
            if (answered == request.entries_size())
                break;
            if (response.status() == haulbox::DONE)
                throw TransferFailure(kNotUnderstood, "the box did not send as many files as asked for");
            if (response.status() == haulbox::ENDED || response.status() == haulbox::REFUSED)
                BoxClient::require(response);
            begin += static_cast<std::size_t>(answered) + 1;
            request.mutable_entries()->DeleteSubrange(0, answered + 1);
        }
        request.clear_entries();
        places.clear();
    }

    bool isSame(const BoxEntry& file, const SourceFile& source)
    {
        const std::uint64_t chunks = chunkCount(file.size);
        std::string data;
        for (std::uint64_t first = 0; first < chunks; first += kDigestsAtOnce) {
            haulbox::DigestsReq request;
            request.set_transfer(m_Transfer);
            if (!file.below.empty())
                request.set_below(file.below);
            request.set_version(file.version);
            request.set_first_chunk(first);
            request.set_chunks(
                static_cast<std::uint32_t>(std::min<std::uint64_t>(kDigestsAtOnce, chunks - first)));
            std::uint64_t chunk = first;
            for (const Digest& theirs : m_Box.digests(request)) {
                source.read(chunk++, data);
                if (digestOf(data) != theirs)
                    return false;
            }
        }
        return true;
    }

    BoxClient& m_Box;
    const std::string m_Transfer;
    const std::string m_LocalPath;
};

} // namespace

int List(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
         const google::protobuf::Message* message, const boost::function<void(const BoxEntry&)>& visit,
         std::string& reason)
{
    return judged(reason, [&] {
        BoxClient box(*channel, message, stallLimit());
        const haulbox::OpenRsp opened = open(box, boxPath);
        if (!opened.folder())
            return visit({std::string(), false, opened.size(), opened.version()});
        Listing listing(box, opened.transfer());
        for (haulbox::ListRsp page; listing.next(page);)
            for (const haulbox::Entry& entry : page.entries())
                visit({entry.below(), entry.folder(), entry.size(), entry.version()});
    });
}

int Compare(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
            const std::string& localPath, const google::protobuf::Message* message,
            const std::vector<BoxEntry>& files, std::vector<bool>& same, std::string& reason)
{
    return judged(reason, [&] {
        BoxClient box(*channel, message, stallLimit());
        const haulbox::OpenRsp opened = open(box, boxPath);
        if (opened.folder() || opened.size() > kChunkSize) {
            same = TreeComparison(box, opened.transfer(), localPath).run(files);
            return;
        }
        same.assign(files.size(), false);
        const std::size_t slash = localPath.rfind('/');
        const SourceFile local(
            Folder::open(slash == std::string::npos ? "." : localPath.substr(0, slash + 1)),
            localPath.substr(slash + 1), SourceFile::Links::Follow);
        std::string data;
        if (local.size() == opened.size() && local.size() > 0)
            local.read(0, data);
        if (!same.empty())
            same.front() = local.size() == opened.size() && data == opened.data();
    });
}

} // namespace bulkhaul
