#include "centre/store/ServedRoot.h"

#include "centre/base/Path.h"
#include "centre/store/ResetAtEnd.h"

namespace centre {

namespace {

constexpr char kDiskAt[] = "SELECT id FROM disk WHERE root_path = :path AND company_id = :company"
                           " AND kesta_code = coalesce(nullif(:box, ''), kesta_code)";
constexpr char kPackageAt[] = "SELECT 1 FROM version WHERE app_full_path = :path"
                              " AND kesta_code = coalesce(nullif(:box, ''), kesta_code)";

std::optional<std::uint32_t> diskAt(Connection& connection, std::uint32_t companyId,
                                    const std::string& boxCode, const std::string& path)
{
    SQLite::Statement& disk = connection.statement(kDiskAt);
    const ResetAtEnd resetAtEnd(disk);
    SQLite::bind(disk, path, companyId, boxCode);
    if (!disk.executeStep())
        return std::nullopt;
    return disk.getColumn(0).getUInt();
}

bool isPackage(Connection& connection, const std::string& boxCode, const std::string& path)
{
    SQLite::Statement& package = connection.statement(kPackageAt);
    const ResetAtEnd resetAtEnd(package);
    SQLite::bind(package, path, boxCode);
    return package.executeStep();
}

} // namespace

std::optional<ServedRoot> findServedRoot(Connection& connection, std::uint32_t companyId,
                                         const std::string& boxCode, const std::string& path)
{
    for (std::string root = path;; root = folderAbove(root)) {
        if (const auto diskId = diskAt(connection, companyId, boxCode, root))
            return ServedRoot{root, diskId};
        if (isPackage(connection, boxCode, root))
            return ServedRoot{folderAbove(root), std::nullopt};
        if (root == "/")
            return std::nullopt;
    }
}

} // namespace centre
