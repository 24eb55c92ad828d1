#ifndef LUMO_TRANSFER_TRANSFERCODES_H
#define LUMO_TRANSFER_TRANSFERCODES_H

/// The directions and codes that the tasks tell a TransferCallback, which documents them.
namespace transfercodes {

constexpr int kDownloading = 0;
constexpr int kUploading = 1;

constexpr int kFolderNotMade = 6;
constexpr int kFileNotCopied = 8;
constexpr int kNotInCatalogue = 10;
constexpr int kNoChannel = 101;
constexpr int kTransferFailed = 999;

} // namespace transfercodes

#endif
