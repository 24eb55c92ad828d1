#ifndef LUMO_CENTRE_BOX_BOXCATALOGUE_H
#define LUMO_CENTRE_BOX_BOXCATALOGUE_H

#include "centre/store/FileContent.h"

#include <optional>
#include <string>
#include <vector>

namespace haulbox {
class Carried;
}

namespace centre {

/// The questions of a storage box to the centre's catalogue. Safe from any thread. Functions throw
/// std::exception when the machine fails.
class BoxCatalogue
{
public:
    /// A path of the box as a place on this machine.
    struct Place
    {
        std::string root;  ///< a folder that the box serves, absolute
        std::string below; ///< relative to it, with "/"; empty: the root itself
        std::vector<std::string> readOnly =
            {}; ///< of Use::Write: paths of the box below it where nothing may be written
    };

    enum class Use
    {
        Read,
        Write
    };

    /// A file or folder that was uploaded.
    struct Entry
    {
        std::string path; ///< on the box, absolute
        bool folder;
        std::optional<FileContent> content{}; ///< of a file that has new content
    };

    virtual ~BoxCatalogue() = default;

    /// Returns the place of `path` if the user of `token` may use it, and everything below it, so and the
    /// message in the request agrees. Otherwise returns nothing and a `reason` for the user.
    virtual std::optional<Place> admit(const std::string& token, const haulbox::Carried& carried,
                                       const std::string& path, Use use, std::string& reason) = 0;

    /// Whether the user of `token` exists and may use the box so at all. Cheaper than `admit`.
    virtual bool mayUse(const std::string& token, Use use) = 0;

    /// Registers the entries that are not registered yet, with the folders above them, and the new contents
    /// of files, in one transaction. Throws bulkhaul::FileFailure(haulbox::NO_SPACE) when the catalogue's
    /// disk is full.
    virtual void record(const std::vector<Entry>& entries) = 0;
};

} // namespace centre

#endif
