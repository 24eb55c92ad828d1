#include "centre/box/BoxFiles.h"

#include "components/bulkhaul/files/FileFailure.h"

#include <utility>
#include <vector>

namespace centre {

using bulkhaul::FileFailure;
using bulkhaul::Folder;

Located locate(const BoxCatalogue::Place& place, Folder::Missing missing)
{
    std::vector<std::string> components = bulkhaul::splitBelow(place.below);
    if (components.empty())
        return {Folder::open(place.root), std::string()};
    std::string name = std::move(components.back());
    components.pop_back();
    return {Folder::open(place.root).below(components, missing), std::move(name)};
}

Folder openFolder(const BoxCatalogue::Place& place)
{
    return Folder::open(place.root).below(bulkhaul::splitBelow(place.below));
}

std::uint64_t chunkAt(std::uint64_t offset, std::uint64_t size)
{
    if (offset % bulkhaul::kChunkSize != 0 || offset >= size)
        throw FileFailure(haulbox::FAILED, "there is no chunk at " + std::to_string(offset));
    return offset / bulkhaul::kChunkSize;
}

void requireChunks(std::uint64_t first, std::uint32_t count, std::uint32_t most, std::uint64_t size)
{
    const std::uint64_t chunks = bulkhaul::chunkCount(size);
    if (count > most || first > chunks || count > chunks - first)
        throw FileFailure(haulbox::FAILED, "these chunks do not exist, or are too many at once");
}

bulkhaul::Digest requireDigest(const bulkhaul::Pieces& data, const std::string& digest,
                               const std::string& name)
{
    const bulkhaul::Digest actual = bulkhaul::digestOf(data);
    if (!bulkhaul::isDigest(digest, actual))
        throw FileFailure(haulbox::CORRUPTED, name + ": what arrived is not what was sent");
    return actual;
}

} // namespace centre
