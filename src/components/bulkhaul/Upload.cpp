#include "components/bulkhaul/LargeUpload.h"
#include "components/bulkhaul/StoreRequest.h"
#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/TreeUpload.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/SourceFile.h"

namespace bulkhaul {

namespace {

void uploadFile(const Transfer& transfer, const std::string& boxPath, const std::string& localPath)
{
    const std::size_t slash = localPath.rfind('/');
    const Folder folder = Folder::open(slash == std::string::npos ? "." : localPath.substr(0, slash + 1));
    const std::string name = slash == std::string::npos ? localPath : localPath.substr(slash + 1);
    const SourceFile source(folder, name, SourceFile::Links::Follow);
    transfer.progress.setTotal(weightOf(source.size()));
    if (source.size() > kChunkSize) {
        haulbox::BeginReq request;
        *request.mutable_carried() = transfer.box.carried();
        request.set_path(boxPath);
        return uploadLarge(transfer, source, request);
    }
    haulbox::StoreReq request;
    *request.mutable_carried() = transfer.box.carried();
    request.set_path(boxPath);
    request.set_keep_existing(transfer.existing == Existing::Keep);
    fillItem(*request.add_items(), std::string(), source);
    store(transfer, request);
}

} // namespace

void fillItem(haulbox::Item& item, const std::string& below, const SourceFile& source)
{
    if (!below.empty())
        item.set_below(below);
    source.read(0, *item.mutable_data());
    item.set_digest(toBytes(digestOf(item.data())));
}

void store(const Transfer& transfer, const haulbox::StoreReq& request)
{
    haulbox::StoreRsp response;
    transfer.box.askForSure(&haulbox::BoxServices_Stub::store, request, response);
    if (!response.wanted().empty())
        throw TransferFailure(kNotUnderstood, "the box asked for data that it was sent");
    transfer.tally.filesKept += response.kept();
    for (const haulbox::Item& item : request.items())
        transfer.tally.bytesMoved += item.data().size();
}

void upload(const Transfer& transfer, const std::string& boxPath, const std::string& localPath)
{
    struct stat status;
    if (::stat(localPath.c_str(), &status) != 0)
        throwErrno(haulbox::UNREADABLE, localPath);
    if (S_ISDIR(status.st_mode))
        uploadTree(transfer, Folder::open(localPath), boxPath);
    else
        uploadFile(transfer, boxPath, localPath);
}

} // namespace bulkhaul
