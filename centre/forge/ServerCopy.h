#ifndef LUMO_CENTRE_FORGE_SERVERCOPY_H
#define LUMO_CENTRE_FORGE_SERVERCOPY_H

#include "centre/base/Cancellation.h"
#include "centre/store/ConnectionPool.h"
#include "forgeserver.pb.h"

#include <string>
#include <vector>

namespace centre {

/// Makes folders of the storage catalogue and copies files between it and the folders of this machine that
/// the centre's operator allows. A file appears whole under its name or not at all. Functions throw
/// std::exception with a reason for the caller; then the catalogue is as it was.
class ServerCopy
{
public:
    /// Throws Error(WrongUse) for a root that is not a folder, or that holds the data folder or lies in it.
    ServerCopy(ConnectionPool& pool, const std::vector<std::string>& copyRoots);

    /// Absolute, without symbolic links.
    const std::vector<std::string>& roots() const { return m_Roots; }

    /// Makes the missing folders of a path, in the catalogue, and on the disk if that is local. Returns the
    /// identifier of the last folder.
    std::uint32_t makeFolder(const User& user, const forgeserver::CreateFolderReq& request);
    // A copy that is canceled throws Error(Failed).
    void copyIn(const User& user, const forgeserver::FileCopyToDbReq& request, const IsCanceled& isCanceled);
    void copyOut(const User& user, const forgeserver::FileCopyFromDbReq& request,
                 const IsCanceled& isCanceled);

private:
    std::string requireRoot(const std::string& path) const;

    ConnectionPool& m_Pool;
    std::vector<std::string> m_Roots;
};

} // namespace centre

#endif
