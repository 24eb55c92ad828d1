#include "components/bulkhaul/LargeDownload.h"
#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/TreeDownload.h"
#include "components/bulkhaul/files/IncomingSmallFiles.h"

namespace bulkhaul {

namespace {

void downloadFile(const Transfer& transfer, const haulbox::OpenRsp& opened, const std::string& boxPath,
                  const Folder& folder, const std::string& name)
{
    transfer.progress.setTotal(weightOf(opened.size()));
    if (opened.size() > kChunkSize)
        return downloadLarge(transfer,
                             {opened.transfer(), std::string(), opened.size(), opened.version(), boxPath},
                             folder, name);
    if (opened.data().size() != opened.size())
        throw TransferFailure(kCorrupted, boxPath + ": not as many bytes arrived as were declared");
    verified(piecesOf(opened.data()), opened.digest(), boxPath);
    transfer.tally.filesKept +=
        putFile(folder, name, opened.data(), transfer.existing, waitingOf(transfer)) ? 0 : 1;
    transfer.tally.bytesMoved += opened.data().size();
}

} // namespace

void download(const Transfer& transfer, const std::string& boxPath, const std::string& localPath)
{
    const auto [parent, name] = splitPath(localPath);
    const Folder folder = Folder::open(parent, haulbox::NOT_WRITABLE);
    const bool keep = transfer.existing == Existing::Keep && isFileOrLink(folder, name);
    if (keep && transfer.sourceIsFile) {
        ++transfer.tally.filesKept;
        return;
    }
    haulbox::OpenReq request;
    *request.mutable_carried() = transfer.box.carried();
    request.set_path(boxPath);
    haulbox::OpenRsp opened;
    transfer.box.askForSure(&haulbox::BoxServices_Stub::open, request, opened);
    if (opened.folder()) {
        bool isNew = false;
        const Folder target = folder.below(name, Folder::Missing::Make, &isNew);
        downloadTree(transfer, opened.transfer(), boxPath, target, isNew);
    } else if (keep)
        ++transfer.tally.filesKept;
    else
        downloadFile(transfer, opened, boxPath, folder, name);
}

} // namespace bulkhaul
