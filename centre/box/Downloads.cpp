#include "centre/box/Downloads.h"

#include "centre/box/Answer.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/TreeWalk.h"

#include <vector>

namespace centre {

using namespace bulkhaul;

namespace {

constexpr auto kRead = BoxCatalogue::Use::Read;
constexpr int kEntriesInPage = 20000;
constexpr std::size_t kLargestFetch = 8 * kChunkSize;

void requireVersion(const SourceFile& file, const std::string& version, const std::string& name)
{
    if (file.version() != version)
        throw FileFailure(haulbox::CHANGED, name + ": is no longer what it was when the transfer began");
}

/// The version holds size and times of the file, but two disks may number their files alike.
std::string cacheKey(const Folder& folder, const std::string& version)
{
    struct stat status;
    ::fstat(folder.get(), &status);
    return std::to_string(status.st_dev) + "/" + version;
}

} // namespace

void Downloads::open(const std::string& token, const haulbox::OpenReq& request, haulbox::OpenRsp& response)
{
    const auto admission = m_Admissions.admit(token, request.carried(), request.path(), kRead);
    const Located located = locate(admission->placeOf(std::string()));
    struct stat status;
    if (located.name.empty() || (located.folder.find(located.name, status) && S_ISDIR(status.st_mode))) {
        response.set_folder(true);
        response.set_transfer(m_Admissions.keep(token, admission));
        return;
    }
    const SourceFile file(located.folder, located.name);
    response.set_size(file.size());
    response.set_version(file.version());
    if (file.size() > kChunkSize) {
        response.set_transfer(m_Admissions.keep(token, admission));
        return;
    }
    file.read(0, *response.mutable_data());
    response.set_digest(toBytes(digestOf(response.data())));
    m_Faults.send("open", response.mutable_data()->data(), response.data().size());
}

void Downloads::list(const std::string& token, const haulbox::ListReq& request, haulbox::ListRsp& response)
{
    const auto admission = m_Admissions.find(token, request.transfer(), kRead);
    const auto visit = [&response](const TreeItem& item) {
        if (response.entries_size() >= kEntriesInPage)
            return false;
        haulbox::Entry& entry = *response.add_entries();
        entry.set_below(item.below);
        if (item.folder) {
            entry.set_folder(true);
            return true;
        }
        entry.set_size(item.size);
        entry.set_version(item.version);
        return true;
    };
    response.set_more(!walkTree(openFolder(admission->place), Strange::Skip, request.after(), visit));
}

void Downloads::fetch(const std::string& token, const haulbox::FetchReq& request, haulbox::FetchRsp& response)
{
    const auto admission = m_Admissions.find(token, request.transfer(), kRead);
    const Folder root = openFolder(admission->place);
    FolderCache folders(root, Folder::Missing::Fail);
    if (request.entries_size() > kLargestBatch)
        throw FileFailure(haulbox::FAILED, "too many files at once");
    std::size_t bytes = 0;
    for (const haulbox::Entry& entry : request.entries()) {
        std::string name;
        const SourceFile file(folders.parentOf(entry.below(), name), name);
        requireVersion(file, entry.version(), entry.below());
        if (file.size() > kChunkSize)
            throw FileFailure(haulbox::FAILED, entry.below() + ": larger than a chunk");
        bytes += file.size();
        if (bytes > kLargestFetch)
            throw FileFailure(haulbox::FAILED, "too many bytes at once");
        std::string data;
        file.read(0, data);
        const std::string digest = toBytes(digestOf(data));
        m_Faults.send("fetch", data.data(), data.size());
        haulbox::Content& content = *response.add_contents();
        content.set_digest(digest);
        if (!entry.has_digest() || entry.digest() != digest)
            content.set_data(std::move(data));
    }
}

Downloads::Source::Source(const Located& located, const std::string& version)
    : file(located.folder, located.name), key(cacheKey(located.folder, file.version()))
{
    requireVersion(file, version, located.name);
}

void Downloads::digests(const google::protobuf::RpcController& call, const std::string& token,
                        const haulbox::DigestsReq& request, haulbox::DigestsRsp& response)
{
    const auto admission = m_Admissions.find(token, request.transfer(), kRead);
    const Source source(locate(admission->placeOf(request.below())), request.version());
    requireChunks(request.first_chunk(), request.chunks(), kMostDigests, source.file.size());
    std::string data;
    const auto digest = [&](std::uint64_t chunk) {
        if (const auto known = m_Digests.find(source.key, chunk))
            return *known;
        source.file.read(chunk, data);
        const Digest computed = digestOf(data);
        m_Digests.add(source.key, chunk, computed);
        return computed;
    };
    if (request.whole()) {
        std::vector<Digest> all;
        for (std::uint64_t chunk = 0; chunk < chunkCount(source.file.size()) && !call.IsCanceled(); ++chunk)
            all.push_back(digest(chunk));
        response.set_digests(toBytes(digestOf(all)));
        return;
    }
    for (std::uint32_t i = 0; i < request.chunks(); ++i) {
        const Digest each = digest(request.first_chunk() + i);
        response.mutable_digests()->append(each.data(), each.size());
    }
}

/// A stream of chunks. A failure is the last message.
class Downloads::Run : public wirecall::StreamSource
{
public:
    Run(Downloads& downloads, google::protobuf::RpcController* call, const std::string& token,
        const haulbox::RunReq& request, haulbox::Chunk& chunk)
        : m_Downloads(downloads),
          m_Call(call),
          m_Admission(downloads.m_Admissions.find(token, request.transfer(), kRead)),
          m_Source(locate(m_Admission->placeOf(request.below())), request.version()),
          m_Chunk(chunk),
          m_Next(request.first_chunk()),
          m_End(m_Next + request.chunks())
    {
        requireChunks(m_Next, request.chunks(), kMostChunksInStream, m_Source.file.size());
    }

    bool next(wirecall::OutgoingBuffer& data) override
    {
        if (m_Next >= m_End)
            return false;
        if (!judge(m_Call, m_Chunk, [&] { fill(m_Next++, data); })) {
            data = wirecall::OutgoingBuffer();
            m_End = m_Next;
        }
        return !m_Call->Failed();
    }

private:
    void fill(std::uint64_t chunk, wirecall::OutgoingBuffer& data)
    {
        m_Downloads.m_Admissions.requireStill(*m_Admission);
        m_Downloads.m_Faults.passMessage("read", m_Call);
        data = wirecall::OutgoingBuffer(chunkLength(m_Source.file.size(), chunk));
        m_Source.file.read(chunk, data.data());
        const Digest digest = digestOf(data.data(), data.size());
        m_Downloads.m_Digests.add(m_Source.key, chunk, digest);
        m_Chunk.set_offset(chunk * kChunkSize);
        m_Chunk.set_digest(toBytes(digest));
        m_Downloads.m_Faults.send("read", data.data(), data.size());
    }

    Downloads& m_Downloads;
    google::protobuf::RpcController* const m_Call;
    const std::shared_ptr<const Admission> m_Admission; ///< in use, so not idle
    const Source m_Source;
    haulbox::Chunk& m_Chunk;
    std::uint64_t m_Next;
    std::uint64_t m_End;
};

std::unique_ptr<wirecall::StreamSource> Downloads::read(google::protobuf::RpcController* call,
                                                        const std::string& token,
                                                        const haulbox::RunReq& request, haulbox::Chunk& chunk)
{
    return std::make_unique<Run>(*this, call, token, request, chunk);
}

} // namespace centre
