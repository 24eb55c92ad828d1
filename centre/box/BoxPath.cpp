#include "centre/box/BoxPath.h"

#include "centre/store/ResetAtEnd.h"
#include "centre/store/Text.h"

#include <algorithm>
#include <climits>

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

bool isBoxPath(const std::string& path)
{
    if (path.empty() || path.size() >= PATH_MAX || path[0] != '/' || path.find('\0') != std::string::npos ||
        !isUtf8(path))
        return false;
    if (path == "/")
        return true;
    for (std::size_t start = 1; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string name = path.substr(start, end - start);
        if (name.empty() || name == "." || name == "..")
            return false;
        start = end + 1;
    }
    return path.back() != '/';
}

std::string folderAbove(const std::string& path)
{
    const std::size_t separator = path.rfind('/');
    return separator == 0 ? "/" : path.substr(0, separator);
}

std::string lastName(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

bool isAtOrBelow(const std::string& root, const std::string& path)
{
    const std::string start = root == "/" ? root : root + "/";
    return path == root || path.compare(0, start.size(), start) == 0;
}

bool overlap(const std::string& one, const std::string& other)
{
    return isAtOrBelow(one, other) || isAtOrBelow(other, one);
}

std::string pathBelow(const std::string& root, const std::string& path)
{
    if (path.size() <= root.size())
        return {};
    return path.substr(root == "/" ? 1 : root.size() + 1);
}

std::optional<Ground> findGround(Connection& connection, std::uint32_t companyId, const std::string& boxCode,
                                 const std::string& path)
{
    for (std::string root = path;; root = folderAbove(root)) {
        if (const auto diskId = diskAt(connection, companyId, boxCode, root))
            return Ground{root, diskId};
        if (isPackage(connection, boxCode, root))
            return Ground{folderAbove(root), std::nullopt};
        if (root == "/")
            return std::nullopt;
    }
}

} // namespace centre
