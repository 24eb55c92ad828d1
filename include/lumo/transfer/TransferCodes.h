#ifndef LUMO_TRANSFER_TRANSFERCODES_H
#define LUMO_TRANSFER_TRANSFERCODES_H

/// The directions and codes that a TransferCallback gets. Code 0 is no failure. A code that is not here comes
/// from the bulk transfer client (lumo/components/bulkhaul/Bulkhaul.h).
namespace transfercodes {

constexpr int kDownloading = 0;
constexpr int kUploading = 1;

/// A local folder was not made, or a local folder was not copied. Also for a folder whose name is not a
/// single path component, that is a link out of the target folder, or whose copy would never end.
constexpr int kFolderNotMade = 6;
/// A local file was not copied. Also for a file whose name is not a single path component.
constexpr int kFileNotCopied = 8;
/// A lookup in the catalogue failed.
constexpr int kNotInCatalogue = 10;
/// No channel to the storage box was opened.
constexpr int kNoChannel = 101;
/// The bulk transfer client reported failure for a whole transfer.
constexpr int kTransferFailed = 999;

} // namespace transfercodes

#endif
