#ifndef LUMO_BULKHAUL_FILES_SOURCEFILE_H
#define LUMO_BULKHAUL_FILES_SOURCEFILE_H

#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <string>

namespace bulkhaul {

/// A file to send, at one version of it. Safe from several threads.
class SourceFile
{
public:
    enum class Links
    {
        Refuse,
        Follow ///< to a regular file
    };

    /// Throws FileFailure unless `name` is a regular file that can be read.
    SourceFile(const Folder& folder, const std::string& name, Links links = Links::Refuse);

    std::uint64_t size() const { return m_Size; }
    /// A text that changes whenever the file does, as far as the system shows it.
    const std::string& version() const { return m_Version; }

    /// Reads the whole of chunk `chunk`. Throws FileFailure: CHANGED when the file has changed since it was
    /// opened.
    void read(std::uint64_t chunk, std::string& data) const;
    /// The same into memory of the chunk's length.
    void read(std::uint64_t chunk, char* data) const;
    /// Throws FileFailure (CHANGED) when the file has changed since it was opened.
    void requireUnchanged() const;

private:
    FileHandle m_File;
    std::string m_Name;
    std::uint64_t m_Size = 0;
    std::string m_Version;
};

std::string versionOf(const struct stat& status);

} // namespace bulkhaul

#endif
