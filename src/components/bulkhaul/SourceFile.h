#ifndef LUMO_BULKHAUL_SOURCEFILE_H
#define LUMO_BULKHAUL_SOURCEFILE_H

#include "components/bulkhaul/Folder.h"

#include <cstdint>
#include <string>

namespace bulkhaul {

/// A file that is moved away from here, at one version of it. Safe from several threads.
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
    /// Changes whenever the file does, as far as the system tells.
    const std::string& version() const { return m_Version; }

    /// Reads chunk `chunk` whole. Throws FileFailure, CHANGED when the file is not what was opened.
    void read(std::uint64_t chunk, std::string& data) const;
    /// Throws FileFailure (CHANGED) when the file is not what was opened.
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
