#include "centre/base/Path.h"

#include "lumo/components/platform/PathComponent.h"
#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <climits>

namespace centre {

bool isPlainAbsolutePath(const std::string& path)
{
    if (path.empty() || path.size() >= PATH_MAX || path[0] != '/' || path.find('\0') != std::string::npos ||
        !platform::isUtf8(path))
        return false;
    if (path == "/")
        return true;
    for (std::size_t start = 1; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (!platform::isPathComponent(path.substr(start, end - start)))
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
    return !one.empty() && !other.empty() && (isAtOrBelow(one, other) || isAtOrBelow(other, one));
}

std::string pathBelow(const std::string& root, const std::string& path)
{
    if (path.size() <= root.size())
        return {};
    return path.substr(root == "/" ? 1 : root.size() + 1);
}

} // namespace centre
