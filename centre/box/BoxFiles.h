#ifndef LUMO_CENTRE_BOX_BOXFILES_H
#define LUMO_CENTRE_BOX_BOXFILES_H

#include "centre/box/BoxCatalogue.h"
#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <string>

namespace centre {

// Files and folders of a box, and what a request may say about them. Functions throw FileFailure.

constexpr int kLargestBatch = 1000;                 ///< files in one request
constexpr int kMostReserved = 8192;                 ///< names in one request
constexpr std::uint32_t kMostDigests = 256;         ///< in one answer
constexpr std::uint32_t kMostChunksInStream = 1024; ///< so that a token is checked again now and then

/// A place as a folder and a name in it. The name is empty for the root of a disk, which is the folder
/// itself.
struct Located
{
    bulkhaul::Folder folder;
    std::string name;
};

Located locate(const BoxCatalogue::Place& place,
               bulkhaul::Folder::Missing missing = bulkhaul::Folder::Missing::Fail);

/// Opens the place itself, which must be a folder.
bulkhaul::Folder openFolder(const BoxCatalogue::Place& place);

/// Returns the chunk that begins at `offset` of a file of `size` bytes. Throws FAILED if none does.
std::uint64_t chunkAt(std::uint64_t offset, std::uint64_t size);

/// Throws FAILED unless a file of `size` bytes has chunks `first` to `first + count - 1`, and they are no
/// more than `most`.
void requireChunks(std::uint64_t first, std::uint32_t count, std::uint32_t most, std::uint64_t size);

/// Returns the digest of the data. Throws CORRUPTED unless it is `digest`.
bulkhaul::Digest requireDigest(const bulkhaul::Pieces& data, const std::string& digest,
                               const std::string& name);

} // namespace centre

#endif
