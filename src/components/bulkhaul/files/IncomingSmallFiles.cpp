#include "components/bulkhaul/files/IncomingSmallFiles.h"

#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/FlushTogether.h"
#include "components/bulkhaul/files/SourceFile.h"

#include <chrono>
#include <set>
#include <utility>

namespace bulkhaul {

namespace {

void writeWhole(const PartialFile& partial, const std::string& data)
{
    if (partial.size() > data.size()) // an earlier attempt was longer
        partial.resize(data.size());
    partial.write(piecesOf(data), 0);
}

/// Removes the partial file where something that a file can't replace has the name.
bool giveName(const PartialFile& partial, const Folder& folder, Existing existing)
{
    try {
        return partial.giveName(folder, existing);
    } catch (const FileFailure& failure) {
        if (failure.status() == haulbox::WRONG_KIND)
            partial.remove(folder);
        throw;
    }
}

constexpr std::size_t kMostOpen = 64;

} // namespace

bool putFile(const Folder& folder, const std::string& name, const std::string& data, Existing existing,
             Waiting waiting)
{
    const PartialFile partial(folder, name, PartialFile::Missing::Make, waiting);
    writeWhole(partial, data);
    partial.flush();
    return giveName(partial, folder, existing);
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
    if (m_Open.size() >= kMostOpen)
        nameOpenFiles();
    PartialFile partial = open(below);
    writeWhole(partial, data);
    m_Open.push_back({below, std::move(partial)});
}

PartialFile IncomingSmallFiles::open(const std::string& below)
{
    std::string name;
    constexpr Waiting kNone = {std::chrono::milliseconds(0), false};
    if (!m_Open.empty()) {
        try {
            const Folder& folder = m_Folders.parentOf(below, name);
            return PartialFile(folder, name, PartialFile::Missing::Make, kNone);
        } catch (const FileFailure&) {
            nameOpenFiles(); // another transfer has it, or the process has too many open files
        }
    }
    const Folder& folder = m_Folders.parentOf(below, name);
    return PartialFile(folder, name, PartialFile::Missing::Make, m_Waiting);
}

void IncomingSmallFiles::nameOpenFiles()
{
    std::vector<const PartialFile*> partials;
    for (const File& file : m_Open)
        partials.push_back(&file.partial);
    flushTogether(partials);
    std::set<std::string> flushed;
    std::string name;
    for (const File& file : m_Open)
        m_Kept += giveName(file.partial, m_Folders.parentOf(file.below, name), m_Existing) ? 0 : 1;
    for (const File& file : m_Open) {
        const Folder& folder = m_Folders.parentOf(file.below, name);
        const std::string path = file.below.substr(0, file.below.size() - name.size());
        if (m_Names == Names::Flushed && flushed.insert(path).second)
            folder.flush();
    }
    m_Open.clear();
}

std::size_t IncomingSmallFiles::finish()
{
    nameOpenFiles();
    return m_Kept;
}

} // namespace bulkhaul
