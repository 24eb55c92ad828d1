#include "centre/box/BoxService.h"

#include "components/bulkhaul/FileFailure.h"
#include "components/bulkhaul/IncomingSmallFiles.h"
#include "components/bulkhaul/SourceFile.h"
#include "components/bulkhaul/TreeWalk.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <climits>
#include <iostream>

namespace centre {

namespace {

using namespace bulkhaul;
using haulbox::Status;

constexpr int kEntriesInPage = 20000;
constexpr std::uint32_t kLargestQuestion = 256;
constexpr int kLargestBatch = 1000;
constexpr std::size_t kLargestFetch = 8 * kChunkSize;

/// A fault switch throws it to break a call off.
struct Broken
{
};

/// Answers with the result of `work`: the response's status says what it threw.
template <class Response, class Work>
void answer(google::protobuf::RpcController* call, Response& response, google::protobuf::Closure* done,
            Work work)
{
    const auto failed = [&response](Status status, const std::string& reason) {
        response.set_status(status);
        response.set_reason(reason);
    };
    response.set_status(haulbox::DONE);
    try {
        work();
    } catch (const FileFailure& failure) {
        failed(failure.status(), failure.what());
    } catch (const Broken&) {
        call->SetFailed("broken off by a fault switch");
    } catch (const std::exception& exception) {
        std::cerr << std::string("lumo-centre: box: ") + exception.what() + "\n";
        failed(haulbox::FAILED, "the box failed: " + std::string(exception.what()));
    }
    done->Run();
}

std::string tokenOf(google::protobuf::RpcController* call)
{
    return static_cast<wirecall::ServerCall*>(call)->token();
}

std::string joined(const std::string& path, const std::string& below)
{
    if (path.empty() || below.empty())
        return path + below;
    return path.back() == '/' ? path + below : path + "/" + below;
}

Existing existingOf(bool keep)
{
    return keep ? Existing::Keep : Existing::Replace;
}

/// The path of something below `path` that is going to be written.
std::string targetPath(const std::string& path, const std::string& below)
{
    splitBelow(below); // throws for an unsafe one
    std::string target = joined(path, below);
    if (target.size() >= PATH_MAX)
        throw FileFailure(haulbox::UNSAFE_NAME,
                          "a path of " + std::to_string(target.size()) + " bytes is too long");
    return target;
}

/// A place as a folder and a name in it. The name is empty for the root of a disk, which is the folder
/// itself.
struct Located
{
    Folder folder;
    std::string name;
};

Located locate(const BoxCatalogue::Place& place, Folder::Missing missing = Folder::Missing::Fail)
{
    std::vector<std::string> components = splitBelow(place.below);
    if (components.empty())
        return {Folder::open(place.root), std::string()};
    std::string name = std::move(components.back());
    components.pop_back();
    return {Folder::open(place.root).below(components, missing), std::move(name)};
}

/// The place itself, which must be a folder.
Folder openFolder(const BoxCatalogue::Place& place)
{
    return Folder::open(place.root).below(splitBelow(place.below));
}

void requireName(const std::string& name)
{
    if (name.empty())
        throw FileFailure(haulbox::WRONG_KIND, "the root of a disk can't be a file");
}

std::uint64_t chunkAt(std::uint64_t offset, std::uint64_t size)
{
    if (offset % kChunkSize != 0 || (offset >= size && offset != 0))
        throw FileFailure(haulbox::FAILED, "there is no chunk at " + std::to_string(offset));
    return offset / kChunkSize;
}

void requireQuestion(const haulbox::DigestsReq& request, std::uint64_t size)
{
    if (request.chunks() > kLargestQuestion || request.first_chunk() > chunkCount(size) ||
        request.chunks() > chunkCount(size) - request.first_chunk())
        throw FileFailure(haulbox::FAILED, "the file has fewer chunks than asked for");
}

Digest requireDigest(const std::string& data, const std::string& digest, const std::string& name)
{
    const Digest actual = digestOf(data);
    if (!isDigest(digest, actual))
        throw FileFailure(haulbox::CORRUPTED, name + ": what arrived is not what was sent");
    return actual;
}

void requireVersion(const SourceFile& file, const std::string& version, const std::string& name)
{
    if (file.version() != version)
        throw FileFailure(haulbox::CHANGED, name + ": is no longer what it was when the transfer began");
}

void spoil(std::string& data)
{
    data[data.size() / 2] ^= 1;
}

/// The version holds size and times of the file, but two disks may number their files alike.
std::string cacheKey(const Folder& folder, const std::string& version)
{
    struct stat status;
    ::fstat(folder.get(), &status);
    return std::to_string(status.st_dev) + "/" + version;
}

} // namespace

BoxCatalogue::Place BoxService::admit(Controller* call, const haulbox::Carried& carried,
                                      const std::string& path, BoxCatalogue::Use use)
{
    std::string reason;
    const auto place = m_Catalogue.admit(tokenOf(call), carried, path, use, reason);
    if (!place)
        throw FileFailure(haulbox::REFUSED, reason);
    return *place;
}

bool BoxService::isSpoiled(const std::string& operation, std::size_t size)
{
    const std::optional<Fault> fault = m_Faults.firesOnData(operation, size);
    if (fault && fault->kind == Fault::Kind::Break)
        throw Broken();
    return fault && size > 0;
}

void BoxService::send(const std::string& operation, std::string& data)
{
    if (isSpoiled(operation, data.size()))
        spoil(data);
}

const std::string& BoxService::arrived(const std::string& operation, const std::string& data,
                                       std::string& spoiled)
{
    if (!isSpoiled(operation, data.size()))
        return data;
    spoiled = data;
    spoil(spoiled);
    return spoiled;
}

void BoxService::read(Controller* call, const haulbox::ReadReq* request, haulbox::ReadRsp* response,
                      Closure* done)
{
    answer(call, *response, done, [&] {
        const Located located =
            locate(admit(call, request->carried(), request->path(), BoxCatalogue::Use::Read));
        struct stat status;
        if (located.name.empty() ||
            (!request->has_version() && located.folder.find(located.name, status) && S_ISDIR(status.st_mode)))
            response->set_folder(true);
        else
            readFile(located.folder, located.name, *request, *response);
    });
}

void BoxService::readFile(const Folder& folder, const std::string& name, const haulbox::ReadReq& request,
                          haulbox::ReadRsp& response)
{
    const SourceFile file(folder, name);
    if (request.has_version())
        requireVersion(file, request.version(), name);
    const std::uint64_t chunk = chunkAt(request.offset(), file.size());
    response.set_size(file.size());
    response.set_version(file.version());
    file.read(chunk, *response.mutable_data());
    const Digest digest = digestOf(response.data());
    response.set_digest(toBytes(digest));
    if (file.size() > kChunkSize)
        m_Digests.add(cacheKey(folder, file.version()), chunk, digest);
    send("read", *response.mutable_data());
}

void BoxService::list(Controller* call, const haulbox::ListReq* request, haulbox::ListRsp* response,
                      Closure* done)
{
    answer(call, *response, done, [&] {
        const Folder folder =
            openFolder(admit(call, request->carried(), request->path(), BoxCatalogue::Use::Read));
        const auto visit = [response](const TreeItem& item) {
            if (response->entries_size() >= kEntriesInPage)
                return false;
            haulbox::Entry& entry = *response->add_entries();
            entry.set_below(item.below);
            if (item.folder) {
                entry.set_folder(true);
                return true;
            }
            entry.set_size(item.size);
            entry.set_version(item.version);
            return true;
        };
        response->set_more(!walkTree(folder, Strange::Skip, request->after(), visit));
    });
}

void BoxService::fetch(Controller* call, const haulbox::FetchReq* request, haulbox::FetchRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] {
        const Folder root =
            openFolder(admit(call, request->carried(), request->path(), BoxCatalogue::Use::Read));
        FolderCache folders(root, Folder::Missing::Fail);
        if (request->entries_size() > kLargestBatch)
            throw FileFailure(haulbox::FAILED, "too many files at once");
        std::size_t bytes = 0;
        for (const haulbox::Entry& entry : request->entries()) {
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
            send("fetch", data);
            haulbox::Content& content = *response->add_contents();
            content.set_digest(digest);
            if (!entry.has_digest() || entry.digest() != digest)
                content.set_data(std::move(data));
        }
    });
}

void BoxService::digests(Controller* call, const haulbox::DigestsReq* request, haulbox::DigestsRsp* response,
                         Closure* done)
{
    answer(call, *response, done, [&] {
        if (!request->has_upload()) {
            const Located located =
                locate(admit(call, request->carried(), request->path(), BoxCatalogue::Use::Read));
            return fileDigests(*call, located.folder, located.name, *request, *response);
        }
        m_Uploads.use(request->upload(), tokenOf(call), [&](Upload& upload) {
            requireQuestion(*request, upload.file->foundSize());
            for (std::uint32_t i = 0; i < request->chunks(); ++i) {
                const std::uint64_t chunk = request->first_chunk() + i;
                const Digest digest = upload.file->foundDigest(chunk);
                upload.file->keep(chunk, digest); // unless the client sends the chunk again
                response->mutable_digests()->append(digest.data(), digest.size());
            }
        });
    });
}

void BoxService::fileDigests(const Controller& call, const Folder& folder, const std::string& name,
                             const haulbox::DigestsReq& request, haulbox::DigestsRsp& response)
{
    const SourceFile file(folder, name);
    requireVersion(file, request.version(), name);
    requireQuestion(request, file.size());
    const std::uint64_t chunks = chunkCount(file.size());
    const std::string key = cacheKey(folder, file.version());
    const auto digest = [&](std::uint64_t chunk) {
        if (const auto known = m_Digests.find(key, chunk))
            return *known;
        std::string data;
        file.read(chunk, data);
        const Digest computed = digestOf(data);
        m_Digests.add(key, chunk, computed);
        return computed;
    };
    if (request.whole()) {
        std::vector<Digest> all;
        for (std::uint64_t chunk = 0; chunk < chunks && !call.IsCanceled(); ++chunk)
            all.push_back(digest(chunk));
        response.set_digests(toBytes(digestOf(all)));
        return;
    }
    for (std::uint32_t i = 0; i < request.chunks(); ++i) {
        const Digest each = digest(request.first_chunk() + i);
        response.mutable_digests()->append(each.data(), each.size());
    }
}

void BoxService::begin(Controller* call, const haulbox::BeginReq* request, haulbox::BeginRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] {
        const std::string path = targetPath(request->path(), request->below());
        Located located = locate(admit(call, request->carried(), path, BoxCatalogue::Use::Write),
                                 Folder::Missing::MakeFlushed);
        requireName(located.name);
        if (request->keep_existing() && isFileOrLink(located.folder, located.name)) {
            m_Catalogue.record({{path, false}});
            response->set_status(haulbox::KEPT);
            return;
        }
        const std::string name = m_Uploads.begin(tokenOf(call), path, request->size(), [&] {
            auto file = std::make_unique<IncomingFile>(std::move(located.folder), located.name,
                                                       request->size(), existingOf(request->keep_existing()));
            response->set_found_size(file->foundSize());
            response->set_found_whole(file->found() == IncomingFile::Found::Target);
            return file;
        });
        response->set_upload(name);
    });
}

void BoxService::write(Controller* call, const haulbox::WriteReq* request, haulbox::WriteRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] {
        m_Uploads.use(request->upload(), tokenOf(call), [&](Upload& upload) {
            const std::uint64_t chunk = chunkAt(request->offset(), upload.size);
            std::string spoiled;
            const std::string& data = arrived("write", request->data(), spoiled);
            if (data.size() != chunkLength(upload.size, chunk))
                throw FileFailure(haulbox::CORRUPTED, upload.path + ": a chunk came with another length");
            upload.file->write(chunk, piecesOf(data), requireDigest(data, request->digest(), upload.path));
        });
    });
}

void BoxService::finish(Controller* call, const haulbox::FinishReq* request, haulbox::FinishRsp* response,
                        Closure* done)
{
    answer(call, *response, done, [&] {
        m_Uploads.finish(request->upload(), tokenOf(call), [&](Upload& upload) {
            if (!isDigest(request->digest(), upload.file->wholeDigest()))
                throw FileFailure(haulbox::CORRUPTED,
                                  upload.path + ": as a whole, what arrived is not what was sent");
            response->set_kept(!upload.file->finish());
            upload.file->folder().flush();
            m_Catalogue.record({{upload.path, false}});
        });
    });
}

void BoxService::store(Controller* call, const haulbox::StoreReq* request, haulbox::StoreRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] {
        if (request->items_size() > kLargestBatch)
            throw FileFailure(haulbox::FAILED, "too many files at once");
        const BoxCatalogue::Place place =
            admit(call, request->carried(), request->path(), BoxCatalogue::Use::Write);
        for (const haulbox::Item& item : request->items())
            if (const std::string path = targetPath(request->path(), item.below()); path != request->path())
                admit(call, request->carried(), path, BoxCatalogue::Use::Write);
        const Located located = locate(place, Folder::Missing::MakeFlushed);
        storeItems(located.folder, located.name, *request, *response);
    });
}

void BoxService::storeItems(const Folder& target, const std::string& targetName,
                            const haulbox::StoreReq& request, haulbox::StoreRsp& response)
{
    IncomingSmallFiles files(target, IncomingSmallFiles::Names::Flushed, existingOf(request.keep_existing()));
    std::vector<BoxCatalogue::Entry> entries;
    for (int i = 0; i < request.items_size(); ++i) {
        const haulbox::Item& item = request.items(i);
        const std::string below = joined(targetName, item.below());
        const std::string path = joined(request.path(), item.below());
        struct stat status;
        if (i == 0 && item.below().empty())
            response.set_existed(targetName.empty() || target.find(targetName, status));
        if (!item.folder())
            requireName(below);
        if (item.folder()) {
            target.below(splitBelow(below), Folder::Missing::MakeFlushed);
        } else if (files.keeps(below)) {
            response.set_kept(response.kept() + 1);
        } else if (item.has_data()) {
            std::string spoiled;
            const std::string& data = arrived("store", item.data(), spoiled);
            requireDigest(data, item.digest(), below);
            if (data.size() > kChunkSize)
                throw FileFailure(haulbox::FAILED, below + ": larger than a chunk");
            m_Uploads.giveUp(path);
            files.add(below, data);
        } else if (const auto digest = files.existingDigest(below, item.size());
                   !digest || !isDigest(item.digest(), *digest)) {
            response.add_wanted(static_cast<std::uint32_t>(i));
            continue;
        }
        entries.push_back({path, item.folder()});
    }
    response.set_kept(response.kept() + static_cast<std::uint32_t>(files.finish()));
    m_Catalogue.record(entries);
}

} // namespace centre
