#include "components/bulkhaul/files/TreeWalk.h"

#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/SourceFile.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace bulkhaul {

namespace {

class Walk
{
public:
    Walk(Strange strange, const std::function<bool(const TreeItem&)>& visit)
        : m_Strange(strange), m_Visit(visit)
    {
    }

    /// `after` are the components, below this folder, of the last item that was visited before.
    bool visitContent(const Folder& folder, const std::string& prefix, const std::string* after,
                      const std::string* afterEnd)
    {
        for (const Folder::Entry& entry : folder.entries()) {
            const bool resumed = after != afterEnd && entry.name == *after;
            if ((after != afterEnd && entry.name < *after) || !isNamed(entry, prefix))
                continue;
            const std::string below = prefix + entry.name;
            splitBelow(below); // throws for one that is too long or too deep
            if (!entry.folder) {
                if (!resumed && !visitFile(folder, entry, below))
                    return false;
                continue;
            }
            if (!resumed && !m_Visit({below, true, 0, std::string()}))
                return false;
            const std::string* const rest = resumed ? after + 1 : afterEnd;
            if (!visitContent(folder.below(entry.name), below + "/", rest, afterEnd))
                return false;
        }
        return true;
    }

private:
    bool isNamed(const Folder::Entry& entry, const std::string& prefix) const
    {
        if (isMovableName(entry.name))
            return true;
        if (m_Strange == Strange::Fail)
            throw FileFailure(haulbox::UNSAFE_NAME,
                              "not a name that can be moved, or not UTF-8: " + prefix + entry.name);
        return false;
    }

    bool visitFile(const Folder& folder, const Folder::Entry& entry, const std::string& below)
    {
        if (m_Strange == Strange::Skip && !entry.regular)
            return true;
        struct stat status;
        const int flags = m_Strange == Strange::Skip ? AT_SYMLINK_NOFOLLOW : 0;
        if (::fstatat(folder.get(), entry.name.c_str(), &status, flags) != 0) {
            if (errno == ENOENT && m_Strange == Strange::Skip)
                return true; // gone since the folder was read
            if (errno == ENOENT)
                throw FileFailure(haulbox::WRONG_KIND, below + ": a link whose target does not exist");
            throwErrno(haulbox::UNREADABLE, below);
        }
        if (!S_ISREG(status.st_mode)) {
            if (m_Strange == Strange::Skip)
                return true;
            throw FileFailure(
                haulbox::WRONG_KIND,
                below + (S_ISDIR(status.st_mode) ? ": a link to a folder" : ": neither a file nor a folder"));
        }
        return m_Visit({below, false, static_cast<std::uint64_t>(status.st_size),
                        m_Strange == Strange::Skip ? versionOf(status) : std::string()});
    }

    const Strange m_Strange;
    const std::function<bool(const TreeItem&)>& m_Visit;
};

} // namespace

bool comesBefore(const std::string& first, const std::string& second)
{
    // By components: a "/" comes before any character of a name.
    return std::lexicographical_compare(
        first.begin(), first.end(), second.begin(), second.end(),
        [](unsigned char a, unsigned char b) { return (a == '/' ? 0 : a) < (b == '/' ? 0 : b); });
}

bool walkTree(const Folder& root, Strange strange, const std::string& after,
              const std::function<bool(const TreeItem&)>& visit)
{
    const std::vector<std::string> components = splitBelow(after);
    return Walk(strange, visit)
        .visitContent(root, std::string(), components.data(), components.data() + components.size());
}

} // namespace bulkhaul
