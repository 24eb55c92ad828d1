#include "centre/store/ServedRoot.h"

#include "centre/base/Path.h"
#include "centre/database/Statement.h"
#include "centre/store/Connection.h"

namespace centre {

namespace {

// A disk's identifier, or NULL for a package. Of those at one path the company's own disk comes first.
const Sql kRootAt(
    "SELECT id, 0 AS place FROM disk WHERE root_path = :path AND company_id = :company"
    " AND kesta_code = coalesce(nullif(:box, ''), kesta_code)"
    " UNION ALL SELECT id, 1 FROM disk JOIN disk_share ON disk_id = id WHERE :shared = 1 AND root_path = "
    ":path"
    " AND disk_share.company_id = :company AND kesta_code = coalesce(nullif(:box, ''), kesta_code)"
    " UNION ALL SELECT NULL, 2 FROM version WHERE app_full_path = :path"
    " AND kesta_code = coalesce(nullif(:box, ''), kesta_code) ORDER BY place");

struct Owner
{
    Connection& connection;
    std::uint32_t companyId;
    const std::string& boxCode;
    Access access;
};

/// The root that `path` itself is, or, if it is a package, the folder above it.
std::optional<ServedRoot> rootAt(const Owner& owner, const std::string& path)
{
    Statement& found = owner.connection.statement(kRootAt);
    const ResetAtEnd resetAtEnd(found);
    found.bindAll(path, owner.companyId, owner.boxCode, owner.access == Access::Read ? 1 : 0);
    if (!found.step())
        return std::nullopt;
    if (const auto disk = found.integer(0))
        return ServedRoot{path, static_cast<std::uint32_t>(*disk)};
    return ServedRoot{folderAbove(path), std::nullopt};
}

/// The innermost root that the folder is or lies below. It is remembered, for the folder's other files.
std::optional<ServedRoot> rootOfFolder(const Owner& owner, const std::string& folder)
{
    const std::string key = std::to_string(owner.companyId) + (owner.access == Access::Read ? 'r' : 'w') +
                            owner.boxCode + '\0' + folder;
    auto& known = owner.connection.memory().servedRoots;
    if (const auto found = known.find(key); found != known.end())
        return found->second;
    std::optional<ServedRoot> root;
    for (std::string path = folder; !(root = rootAt(owner, path)) && path != "/";)
        path = folderAbove(path);
    return known.emplace(key, root).first->second;
}

} // namespace

std::optional<ServedRoot> findServedRoot(Connection& connection, std::uint32_t companyId,
                                         const std::string& boxCode, const std::string& path, Access access)
{
    const Owner owner{connection, companyId, boxCode, access};
    const std::optional<ServedRoot> root = rootAt(owner, path);
    return root || path == "/" ? root : rootOfFolder(owner, folderAbove(path));
}

} // namespace centre
