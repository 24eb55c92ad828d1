#include "centre/box/Uploads.h"

#include "centre/box/Answer.h"
#include "components/bulkhaul/files/FileFailure.h"

#include <optional>
#include <utility>
#include <vector>

namespace centre {

using namespace bulkhaul;

namespace {

constexpr auto kWrite = BoxCatalogue::Use::Write;

Existing existingOf(bool keep)
{
    return keep ? Existing::Keep : Existing::Replace;
}

void requireFileName(const std::string& name)
{
    if (name.empty())
        throw FileFailure(haulbox::WRONG_KIND, "the root of a disk can't be a file");
}

/// Throws FileFailure (WRONG_KIND) for an entry that exists as the other kind, or as neither.
void requireFitting(const Folder& root, const haulbox::ReserveReq& request)
{
    FolderCache folders(root, Folder::Missing::Fail);
    std::string missing; // a folder that will be made, with a "/"
    std::string name;
    for (const haulbox::Entry& entry : request.entries()) {
        if (!missing.empty() && entry.below().compare(0, missing.size(), missing) == 0)
            continue;
        struct stat status;
        if (!folders.parentOf(entry.below(), name).find(name, status)) {
            if (entry.folder())
                missing = entry.below() + "/";
        } else if (entry.folder() ? !S_ISDIR(status.st_mode)
                                  : !S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) {
            throw FileFailure(haulbox::WRONG_KIND,
                              entry.below() + ": the name belongs to something else on the box");
        }
    }
}

/// Of a file of at most one chunk, whose digest is `digest`.
FileContent contentOf(std::uint64_t size, const Digest& digest)
{
    return {size, toHex(digestOf(std::vector<Digest>(size > 0 ? 1 : 0, digest)))};
}

} // namespace

template <class Request>
Admissions::Pointer Uploads::admissionOf(const std::string& token, const Request& request)
{
    if (request.has_transfer())
        return m_Admissions.find(token, request.transfer(), kWrite);
    return m_Admissions.admit(token, request.carried(), request.path(), kWrite);
}

void Uploads::begin(const std::string& token, const haulbox::BeginReq& request, haulbox::BeginRsp& response)
{
    const auto admission = admissionOf(token, request);
    const std::string path = admission->pathOf(request.below());
    Located located = locate(admission->placeOf(request.below()), Folder::Missing::MakeFlushed);
    requireFileName(located.name);
    if (request.keep_existing() && isFileOrLink(located.folder, located.name)) {
        m_Catalogue.record({{path, false}});
        response.set_status(haulbox::KEPT);
        return;
    }
    std::uint64_t otherBytes = 0;
    const auto open = [&] {
        auto file = std::make_unique<IncomingFile>(std::move(located.folder), located.name, request.size(),
                                                   existingOf(request.keep_existing()));
        response.set_found_size(file->foundSize());
        response.set_found_whole(file->found() == IncomingFile::Found::Target);
        return file;
    };
    try {
        response.set_upload(m_Open.begin(token, admission, path, request.size(), otherBytes, open));
    } catch (const FileFailure&) {
        response.set_other_bytes(otherBytes);
        throw;
    }
}

void Uploads::digests(const std::string& token, const haulbox::DigestsReq& request,
                      haulbox::DigestsRsp& response)
{
    m_Open.use(request.upload(), token, [&](Upload& upload) {
        m_Admissions.requireStill(*upload.admission);
        requireChunks(request.first_chunk(), request.chunks(), kMostDigests, upload.file->foundSize());
        for (std::uint32_t i = 0; i < request.chunks(); ++i) {
            const std::uint64_t chunk = request.first_chunk() + i;
            const Digest digest = upload.file->foundDigest(chunk);
            upload.file->keep(chunk, digest); // unless the client sends the chunk again
            upload.arrived += kChunkSize;
            response.mutable_digests()->append(digest.data(), digest.size());
        }
    });
}

/// Takes the chunks of a stream.
class Uploads::Run : public wirecall::StreamSink
{
public:
    Run(Uploads& uploads, google::protobuf::RpcController* call, const std::string& token,
        const haulbox::Chunk& chunk, haulbox::WriteRsp& response)
        : m_Uploads(uploads),
          m_Call(call),
          m_Token(token),
          m_Handle(chunk.upload()),
          m_Upload(uploads.m_Open.find(m_Handle, token)),
          m_Chunk(chunk),
          m_Response(response)
    {
    }

    bool take(const wirecall::Payload& data) override
    {
        return judge(m_Call, m_Response, [&] { write(data.pieces()); });
    }

    void finish() override {}

private:
    void write(const Pieces& arrived)
    {
        m_Uploads.m_Admissions.requireStill(*m_Upload->admission);
        m_Uploads.m_Faults.passMessage("write", m_Call);
        if (++m_Chunks > kMostChunksInStream)
            throw FileFailure(haulbox::FAILED, "too many chunks in one stream");
        std::string spoiled;
        const Pieces data = m_Uploads.m_Faults.arrived("write", arrived, spoiled);
        const std::uint64_t chunk = chunkAt(m_Chunk.offset(), m_Upload->size);
        if (sizeOf(data) != chunkLength(m_Upload->size, chunk))
            throw FileFailure(haulbox::CORRUPTED, m_Upload->path + ": a chunk came with another length");
        const Digest digest = requireDigest(data, m_Chunk.digest(), m_Upload->path);
        m_Uploads.m_Open.use(m_Handle, m_Token, [&](Upload& upload) {
            upload.file->write(chunk, data, digest);
            upload.arrived += sizeOf(data);
        });
    }

    Uploads& m_Uploads;
    google::protobuf::RpcController* const m_Call;
    const std::string m_Token;
    const std::string m_Handle;
    const std::shared_ptr<Upload> m_Upload; ///< in use, so busy
    const haulbox::Chunk& m_Chunk;
    haulbox::WriteRsp& m_Response;
    std::uint32_t m_Chunks = 0;
};

std::unique_ptr<wirecall::StreamSink> Uploads::write(google::protobuf::RpcController* call,
                                                     const std::string& token, const haulbox::Chunk& chunk,
                                                     haulbox::WriteRsp& response)
{
    return std::make_unique<Run>(*this, call, token, chunk, response);
}

void Uploads::finish(const std::string& token, const haulbox::FinishReq& request,
                     haulbox::FinishRsp& response)
{
    m_Open.finish(request.upload(), token, [&](Upload& upload) {
        m_Admissions.requireStill(*upload.admission);
        const Digest digest = upload.file->wholeDigest();
        if (!isDigest(request.digest(), digest))
            throw FileFailure(haulbox::CORRUPTED,
                              upload.path + ": as a whole, what arrived is not what was sent");
        response.set_kept(!upload.file->finish());
        upload.file->folder().flush();
        std::optional<FileContent> content;
        if (!response.kept())
            content = {upload.size, toHex(digest)};
        m_Catalogue.record({{upload.path, false, content}});
    });
}

void Uploads::reserve(const std::string& token, const haulbox::ReserveReq& request)
{
    if (request.entries_size() > kMostReserved)
        throw FileFailure(haulbox::FAILED, "too many names at once");
    const auto admission = m_Admissions.find(token, request.transfer(), kWrite);
    for (const haulbox::Entry& entry : request.entries())
        admission->placeOf(entry.below()); // throws for one that is not valid
    m_Reservations.reserve(admission, request,
                           [&] { requireFitting(openFolder(admission->placeOf(std::string())), request); });
}

void Uploads::store(const std::string& token, const haulbox::StoreReq& request, haulbox::StoreRsp& response)
{
    if (request.items_size() > kLargestBatch)
        throw FileFailure(haulbox::FAILED, "too many files at once");
    const auto admission = admissionOf(token, request);
    for (const haulbox::Item& item : request.items())
        admission->placeOf(item.below()); // throws for one that is not valid, before anything is made
    const Located target = locate(admission->placeOf(std::string()), Folder::Missing::MakeFlushed);
    if (request.items_size() > 0 && request.items(0).below().empty()) {
        struct stat status;
        response.set_existed(target.name.empty() || target.folder.find(target.name, status));
    }
    IncomingSmallFiles files(target.folder, IncomingSmallFiles::Names::Flushed,
                             existingOf(request.keep_existing()));
    std::vector<BoxCatalogue::Entry> entries;
    for (int i = 0; i < request.items_size(); ++i) {
        const haulbox::Item& item = request.items(i);
        if (auto entry = storeItem(*admission, target, item, files, response))
            entries.push_back(std::move(*entry));
        else
            response.add_wanted(static_cast<std::uint32_t>(i));
    }
    const std::size_t kept = files.finish();
    for (BoxCatalogue::Entry& entry : entries)
        if (kept > 0) // it is not known which
            entry.content.reset();
    response.set_kept(response.kept() + static_cast<std::uint32_t>(kept));
    m_Catalogue.record(entries);
    if (!request.has_transfer() && !entries.empty() && entries.front().folder &&
        request.items(0).below().empty())
        response.set_transfer(m_Admissions.keep(token, admission));
}

/// Returns nothing if the box needs the item's data.
std::optional<BoxCatalogue::Entry> Uploads::storeItem(const Admission& admission, const Located& target,
                                                      const haulbox::Item& item, IncomingSmallFiles& files,
                                                      haulbox::StoreRsp& response)
{
    BoxCatalogue::Entry entry{admission.pathOf(item.below()), item.folder()};
    const std::string below = target.name.empty() || item.below().empty() ? target.name + item.below()
                                                                          : target.name + "/" + item.below();
    if (item.folder()) {
        target.folder.below(splitBelow(below), Folder::Missing::MakeFlushed);
        return entry;
    }
    requireFileName(below);
    if (files.keeps(below)) {
        response.set_kept(response.kept() + 1);
        return entry;
    }
    if (!item.has_data()) {
        const auto digest = files.existingDigest(below, item.size());
        if (!digest || !isDigest(item.digest(), *digest))
            return std::nullopt;
        entry.content = contentOf(item.size(), *digest);
        return entry;
    }
    std::string spoiled;
    const Digest digest =
        requireDigest(m_Faults.arrived("store", piecesOf(item.data()), spoiled), item.digest(), below);
    if (item.data().size() > kChunkSize)
        throw FileFailure(haulbox::FAILED, below + ": larger than a chunk");
    m_Open.giveUp(entry.path);
    files.add(below, item.data());
    entry.content = contentOf(item.data().size(), digest);
    return entry;
}

} // namespace centre
