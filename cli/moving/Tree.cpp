#include "cli/moving/Tree.h"

#include "cli/base/LocalFiles.h"

#include "lumo/client/Error.h"
#include "lumo/components/platform/PathComponent.h"
#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include <dirent.h>
#include <sys/stat.h>

namespace cli {

namespace {

std::string joined(const std::string& folder, const std::string& name)
{
    return folder.empty() ? name : folder + "/" + name;
}

void mark(TreeItem& item, const Filter& filter)
{
    if (item.folder)
        item.skipped = !filter.admitsFolder(item.path);
    else
        item.skipped = !filter.admitsFile(item.path) || item.bytes.value_or(filter.minimum) < filter.minimum;
}

class LocalWalk
{
public:
    LocalWalk(const std::string& root, const Filter& filter) : m_Root(root), m_Filter(filter) {}

    Tree run()
    {
        struct stat status;
        if (::stat(m_Root.c_str(), &status) != 0)
            m_Tree.exists = false;
        else if (S_ISDIR(status.st_mode))
            walk(std::string());
        else
            add(std::string());
        return std::move(m_Tree);
    }

private:
    void walk(const std::string& folder)
    {
        std::vector<std::string> names;
        if (const int error = readNames(folder, names); error != 0) {
            fail(folder, true, std::string("the folder can't be read: ") + std::strerror(error));
            m_Tree.whole = false;
            return;
        }
        std::sort(names.begin(), names.end());
        for (const std::string& name : names)
            add(joined(folder, name));
    }

    int readNames(const std::string& folder, std::vector<std::string>& names) const
    {
        const std::string path = joined(m_Root, folder);
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(path.c_str()), &::closedir);
        if (!entries)
            return errno;
        errno = 0;
        while (const dirent* entry = ::readdir(entries.get())) {
            const std::string name = entry->d_name;
            if (name != "." && name != ".." && !isPartialName(name))
                names.push_back(name);
            errno = 0;
        }
        return errno;
    }

    void add(const std::string& path)
    {
        const std::string whole = path.empty() ? m_Root : joined(m_Root, path);
        struct stat status;
        const std::string name = path.substr(path.rfind('/') + 1);
        if (!path.empty() && !platform::isUtf8(name))
            return fail(path, false, "its name is not UTF-8");
        if (::lstat(whole.c_str(), &status) != 0)
            return fail(path, false, std::strerror(errno));
        if (S_ISLNK(status.st_mode) && (::stat(whole.c_str(), &status) != 0 || S_ISDIR(status.st_mode)))
            return fail(path, false, "it is a link to nothing or to a folder");
        TreeItem item;
        item.path = path;
        item.folder = S_ISDIR(status.st_mode);
        if (S_ISREG(status.st_mode))
            item.bytes = static_cast<std::uint64_t>(status.st_size);
        mark(item, m_Filter);
        item.skipped = item.skipped || (!item.folder && status.st_mtime < m_Filter.newerThan);
        if (!item.skipped && !item.folder && !S_ISREG(status.st_mode))
            item.problem = "it is neither a file nor a folder";
        const bool walked = item.folder && !item.skipped;
        m_Tree.items.push_back(std::move(item));
        if (walked)
            walk(path);
    }

    void fail(const std::string& path, bool folder, const std::string& problem)
    {
        if (folder && !m_Tree.items.empty() && m_Tree.items.back().path == path) {
            m_Tree.items.back().problem = problem;
            return;
        }
        TreeItem item;
        item.path = path;
        item.folder = folder;
        mark(item, m_Filter);
        item.problem = item.skipped ? "" : problem;
        m_Tree.items.push_back(std::move(item));
    }

    const std::string m_Root;
    const Filter& m_Filter;
    Tree m_Tree;
};

class CatalogueWalk
{
public:
    CatalogueWalk(const lumo::Catalogue& catalogue, const Tree& onBox, const Filter& filter)
        : m_Catalogue(catalogue), m_Filter(filter)
    {
        for (const TreeItem& item : onBox.items)
            m_OnBox.emplace(item.path, &item);
    }

    Tree run(lumo::FolderId folder)
    {
        walk(folder, std::string(), 0);
        return std::move(m_Tree);
    }

private:
    static constexpr int kDeepest = 256; // as a storage box

    void walk(lumo::FolderId folder, const std::string& path, int depth)
    {
        try {
            if (depth > kDeepest)
                throw lumo::Error(lumo::Error::Kind::Refused, "more than 256 folders are in each other");
            std::vector<lumo::Entry> entries = m_Catalogue.folders(folder);
            const std::vector<lumo::Entry> files = m_Catalogue.files(folder);
            entries.insert(entries.end(), files.begin(), files.end());
            std::set<std::string> names;
            for (const lumo::Entry& entry : entries)
                add(entry, path, depth, names);
        } catch (const lumo::Error& error) {
            if (error.kind() == lumo::Error::Kind::Closed)
                throw;
            TreeItem item;
            item.path = path;
            item.folder = true;
            item.problem = std::string("its list did not arrive: ") + error.what();
            m_Tree.items.push_back(std::move(item));
            m_Tree.whole = false;
        }
    }

    void add(const lumo::Entry& entry, const std::string& folder, int depth, std::set<std::string>& names)
    {
        TreeItem item;
        item.folder = entry.kind == lumo::Entry::Kind::Folder;
        const std::string name =
            entry.name.value_or((item.folder ? "folder:" + std::to_string(entry.folder.number())
                                             : "file:" + std::to_string(entry.file.number())));
        item.path = joined(folder, name);
        if (!entry.name && !item.folder)
            item.file = entry.file;
        else if (!entry.name)
            item.problem = "the folder's name is too long for its record";
        else if (!platform::isPathComponent(name))
            item.problem = "its name can't be that of a file";
        else if (!names.insert(name).second)
            item.problem = "another entry has the same name";
        if (const auto known = m_OnBox.find(item.path); known != m_OnBox.end())
            item.bytes = known->second->bytes;
        mark(item, m_Filter);
        const bool walked = item.folder && !item.skipped && item.problem.empty();
        const std::string path = item.path;
        m_Tree.items.push_back(std::move(item));
        if (walked)
            walk(entry.folder, path, depth + 1);
    }

    const lumo::Catalogue& m_Catalogue;
    const Filter& m_Filter;
    std::map<std::string, const TreeItem*> m_OnBox;
    Tree m_Tree;
};

} // namespace

Tree localTree(const std::string& root, const Filter& filter)
{
    Tree tree = LocalWalk(root, filter).run();
    tree.emptyFolders = filter.keepsEmptyFolders();
    return tree;
}

Tree boxTree(const lumo::BoxPlace& place, const Filter& filter)
{
    Tree tree;
    tree.emptyFolders = filter.keepsEmptyFolders();
    std::string skipped; // the folder, with a "/", whose content is left out
    try {
        for (const lumo::BoxPlace::Item& found : place.list()) {
            if (!skipped.empty() && found.path.compare(0, skipped.size(), skipped) == 0)
                continue;
            TreeItem item;
            item.path = found.path;
            item.folder = found.folder;
            item.version = found.version;
            if (!item.folder)
                item.bytes = found.bytes;
            mark(item, filter);
            if (item.folder && item.skipped)
                skipped = item.path + "/";
            tree.items.push_back(std::move(item));
        }
    } catch (const lumo::Error& error) {
        if (error.kind() != lumo::Error::Kind::NotFound)
            throw;
        tree.exists = false;
    }
    return tree;
}

Tree catalogueTree(const lumo::Catalogue& catalogue, lumo::FolderId folder, const Tree& onBox,
                   const Filter& filter)
{
    Tree tree = CatalogueWalk(catalogue, onBox, filter).run(folder);
    tree.emptyFolders = filter.keepsEmptyFolders();
    return tree;
}

} // namespace cli
