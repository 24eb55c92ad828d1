#ifndef LUMO_CLIENT_BOXPLACE_H
#define LUMO_CLIENT_BOXPLACE_H

#include "lumo/client/Transfers.h"
#include "lumo/components/platform/Export.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumo {

namespace internal {
class BoxAccess;
}

/// A disk, a folder or a file as its storage box has it: what is there, with sizes, and single transfers to
/// and from paths below. Transfers::at makes one. A light handle that may be copied and used from any thread;
/// each member returns when the box has answered. It keeps the connection, so that no other session can be
/// opened while one exists.
class LUMO_EXPORT BoxPlace
{
public:
    explicit BoxPlace(std::shared_ptr<internal::BoxAccess> access, std::string path);

    /// The same for a path below, which need not exist; empty: this one.
    BoxPlace below(const std::string& path) const;

    struct Item
    {
        std::string path; ///< from here, with "/" between names; empty: the file that this place is
        bool folder = false;
        std::uint64_t bytes = 0; ///< of a file
        std::string version;     ///< of a file, for `compare`
    };
    /// All that is here, a folder before its content. Throws Error: NotFound when there is nothing, NoAnswer
    /// or Refused when the list did not arrive whole.
    std::vector<Item> list() const;
    /// Whether files of a list have the same content as those below a local folder, or as a local file: false
    /// also for one that is missing or can't be read. Throws Error as list does.
    std::vector<bool> compare(const std::vector<Item>& files, const std::string& local) const;

    /// Hears of the progress, 0 to 100, on a thread of the library; it must not throw.
    using Percent = std::function<void(int)>;
    /// Fetches the file or folder to a local path, whose folder must exist. Unless `overwrite`, files that
    /// exist are kept. An empty `percent` saves a thread for the time of the call.
    Transfer::Outcome get(const std::string& local, bool overwrite, const Percent& percent = {}) const;
    /// Sends a local file or folder; folders above this place are made if need be.
    Transfer::Outcome put(const std::string& local, bool overwrite, const Percent& percent = {}) const;

private:
    std::shared_ptr<internal::BoxAccess> m_Access;
    std::string m_Path; ///< on the box
};

} // namespace lumo

#endif
