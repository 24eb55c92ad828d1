#include "components/bulkhaul/files/IncomingSmallFiles.h"

#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/SourceFile.h"

#include <set>

namespace bulkhaul {

namespace {

void writeWhole(const PartialFile& partial, const std::string& data)
{
    if (partial.size() > data.size()) // an earlier attempt was longer
        partial.resize(data.size());
    partial.write(piecesOf(data), 0);
}

} // namespace

bool putFile(const Folder& folder, const std::string& name, const std::string& data, Existing existing)
{
    struct stat status;
    findFile(folder, name, status);
    const PartialFile partial(folder, name, PartialFile::Missing::Make);
    writeWhole(partial, data);
    return partial.giveName(folder, existing);
}

bool IncomingSmallFiles::keeps(const std::string& below)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(below, name);
    return m_Existing == Existing::Keep && isFileOrLink(folder, name);
}

std::optional<Digest> IncomingSmallFiles::existingDigest(const std::string& below, std::uint64_t size)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(below, name);
    struct stat status;
    if (size > kChunkSize || !findFile(folder, name, status) ||
        static_cast<std::uint64_t>(status.st_size) != size)
        return std::nullopt;
    try {
        std::string data;
        const SourceFile file(folder, name);
        if (file.size() != size)
            return std::nullopt;
        file.read(0, data);
        return digestOf(data);
    } catch (const FileFailure&) {
        return std::nullopt; // it can still be replaced
    }
}

void IncomingSmallFiles::add(const std::string& below, const std::string& data)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(below, name);
    struct stat status;
    findFile(folder, name, status);
    writeWhole(PartialFile(folder, name, PartialFile::Missing::Make), data);
    m_Files.push_back({below, &data, digestOf(data)});
}

/// Returns false where an existing file was kept instead.
bool IncomingSmallFiles::finish(const File& file)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(file.below, name);
    PartialFile partial(folder, name, PartialFile::Missing::None);
    // It was not locked in between, so another transfer may have written to it or have given it the name.
    if (!partial) {
        if (m_Existing == Existing::Keep && isFileOrLink(folder, name))
            return false;
        partial = PartialFile(folder, name, PartialFile::Missing::Make);
    }
    if (partial.size() != file.data->size() ||
        digestAt(partial.get(), 0, file.data->size(), name) != file.digest)
        writeWhole(partial, *file.data);
    return partial.giveName(folder, m_Existing);
}

std::size_t IncomingSmallFiles::finish()
{
    std::size_t kept = 0;
    for (const File& file : m_Files)
        kept += finish(file) ? 0 : 1;
    std::set<std::string> flushed;
    std::string name;
    for (const File& file : m_Files) {
        const Folder& folder = m_Folders.parentOf(file.below, name);
        const std::string path = file.below.substr(0, file.below.size() - name.size());
        if (m_Names == Names::Flushed && flushed.insert(path).second)
            folder.flush();
    }
    m_Files.clear();
    return kept;
}

} // namespace bulkhaul
