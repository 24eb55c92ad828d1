#include "cli/moving/Mover.h"

#include "cli/base/ExitCode.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

namespace cli {

namespace {

std::string pathBelow(const std::string& folder, const std::string& path)
{
    return path.empty() ? folder : folder + (folder.empty() || folder.back() == '/' ? "" : "/") + path;
}

std::string parentOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

class Getter : public Mover
{
public:
    Getter(const lumo::BoxPlace& source, const std::string& target, const GetByIdentifier& getByIdentifier)
        : m_Source(source), m_Target(target), m_GetByIdentifier(getByIdentifier)
    {
    }

    lumo::Transfer::Outcome moveAll(bool overwrite, const lumo::BoxPlace::Percent& percent) override
    {
        return m_Source.get(m_Target, overwrite, percent);
    }

    lumo::Transfer::Outcome move(const PlanItem& item, bool overwrite) override
    {
        if (!item.path.empty())
            requireFolder(parentOf(item.path));
        if (item.file.isSet())
            return m_GetByIdentifier(item.file, pathBelow(m_Target, parentOf(item.path)));
        return m_Source.below(item.path).get(pathBelow(m_Target, item.path), overwrite);
    }

    void makeFolder(const PlanItem& item) override { requireFolder(item.path); }

    void remove(const PlanItem& item) override
    {
        requireFolder(parentOf(item.path));
        const std::string path = pathBelow(m_Target, item.path);
        if ((item.folder ? ::rmdir(path.c_str()) : ::unlink(path.c_str())) != 0)
            throw Failure(ExitCode::TransferFailed,
                          std::string("it can't be removed: ") + std::strerror(errno));
    }

private:
    /// Makes a folder below the target with those above it. Nothing is reached through a link below the
    /// target.
    void requireFolder(const std::string& path)
    {
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            if (m_Folders.count(path) > 0)
                return;
        }
        if (!path.empty())
            requireFolder(parentOf(path));
        const std::string whole = pathBelow(m_Target, path);
        struct stat status;
        // The target itself is the user's own choice, and may be a link.
        const auto look = [&] {
            return path.empty() ? ::stat(whole.c_str(), &status) : ::lstat(whole.c_str(), &status);
        };
        if (look() != 0 && (::mkdir(whole.c_str(), 0777) != 0 && errno != EEXIST))
            throw Failure(ExitCode::TransferFailed,
                          "the folder '" + whole + "' can't be made: " + std::strerror(errno));
        if (look() != 0 || !S_ISDIR(status.st_mode))
            throw Failure(ExitCode::TransferFailed, "'" + whole + "' is not a folder");
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Folders.insert(path);
    }

    const lumo::BoxPlace m_Source;
    const std::string m_Target;
    const GetByIdentifier m_GetByIdentifier;
    std::mutex m_Mutex;
    std::set<std::string> m_Folders; ///< that exist
};

class Putter : public Mover
{
public:
    Putter(const std::string& source, const lumo::BoxPlace& target, const lumo::Catalogue& catalogue,
           const lumo::Entry& folder, const std::string& name)
        : m_Source(source),
          m_Target(target.below(name)),
          m_Catalogue(catalogue),
          m_Folder(folder),
          m_Name(name)
    {
    }

    lumo::Transfer::Outcome moveAll(bool overwrite, const lumo::BoxPlace::Percent& percent) override
    {
        return m_Target.put(m_Source, overwrite, percent);
    }

    lumo::Transfer::Outcome move(const PlanItem& item, bool overwrite) override
    {
        return m_Target.below(item.path).put(pathBelow(m_Source, item.path), overwrite);
    }

    void makeFolder(const PlanItem& item) override
    {
        m_Catalogue.makeFolder(m_Folder, pathBelow(m_Name, item.path));
    }

    void remove(const PlanItem& item) override
    {
        throw Failure(ExitCode::WrongUse,
                      "'" + item.path + "' can't be removed: lumo removes local files only");
    }

private:
    const std::string m_Source;
    const lumo::BoxPlace m_Target;
    const lumo::Catalogue m_Catalogue;
    const lumo::Entry m_Folder;
    const std::string m_Name;
};

} // namespace

std::unique_ptr<Mover> moverFrom(const lumo::BoxPlace& source, const std::string& target,
                                 const GetByIdentifier& getByIdentifier)
{
    return std::make_unique<Getter>(source, target, getByIdentifier);
}

std::unique_ptr<Mover> moverTo(const std::string& source, const lumo::BoxPlace& target,
                               const lumo::Catalogue& catalogue, const lumo::Entry& folder,
                               const std::string& name)
{
    return std::make_unique<Putter>(source, target, catalogue, folder, name);
}

} // namespace cli
