#include "centre/store/ServedRoot.h"

#include "centre/base/Path.h"
#include "centre/database/Statement.h"
#include "centre/store/Connection.h"

namespace centre {

namespace {

// A disk's identifier, or NULL for a package. A disk at the same path comes first.
constexpr char kRootAt[] = "SELECT id, 0 AS place FROM disk WHERE root_path = :path AND company_id = :company"
                           " AND kesta_code = coalesce(nullif(:box, ''), kesta_code)"
                           " UNION ALL SELECT NULL, 1 FROM version WHERE app_full_path = :path"
                           " AND kesta_code = coalesce(nullif(:box, ''), kesta_code) ORDER BY place";

struct Owner
{
    Connection& connection;
    std::uint32_t companyId;
    const std::string& boxCode;
};

/// The root that `path` itself is, or, if it is a package, the folder above it.
std::optional<ServedRoot> rootAt(const Owner& owner, const std::string& path)
{
    Statement& found = owner.connection.statement(kRootAt);
    const ResetAtEnd resetAtEnd(found);
    found.bindAll(path, owner.companyId, owner.boxCode);
    if (!found.step())
        return std::nullopt;
    if (const auto disk = found.integer(0))
        return ServedRoot{path, static_cast<std::uint32_t>(*disk)};
    return ServedRoot{folderAbove(path), std::nullopt};
}

/// The innermost root that the folder is or lies below. It is remembered, for the folder's other files.
std::optional<ServedRoot> rootOfFolder(const Owner& owner, const std::string& folder)
{
    const std::string key = std::to_string(owner.companyId) + '\0' + owner.boxCode + '\0' + folder;
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
                                         const std::string& boxCode, const std::string& path)
{
    const Owner owner{connection, companyId, boxCode};
    const std::optional<ServedRoot> root = rootAt(owner, path);
    return root || path == "/" ? root : rootOfFolder(owner, folderAbove(path));
}

} // namespace centre
