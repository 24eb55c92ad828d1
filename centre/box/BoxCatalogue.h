#ifndef LUMO_CENTRE_BOX_BOXCATALOGUE_H
#define LUMO_CENTRE_BOX_BOXCATALOGUE_H

#include <optional>
#include <string>
#include <vector>

namespace haulbox {
class Carried;
}

namespace centre {

/// What a storage box asks of the centre's catalogue. Safe from any thread; what fails for a reason of the
/// machine throws std::exception.
class BoxCatalogue
{
public:
    /// A path of the box as a place on this machine.
    struct Place
    {
        std::string root;  ///< a folder that the box serves, absolute
        std::string below; ///< relative to it, with "/"; empty: the root itself
    };

    enum class Use
    {
        Read,
        Write
    };

    /// What an upload brought.
    struct Entry
    {
        std::string path; ///< on the box, absolute
        bool folder;
    };

    virtual ~BoxCatalogue() = default;

    /// Where `path` lies, if the user of `token` may use it so, judged by the message that the request
    /// carries, too. Otherwise empty, with a `reason` for the user.
    virtual std::optional<Place> admit(const std::string& token, const haulbox::Carried& carried,
                                       const std::string& path, Use use, std::string& reason) = 0;

    /// Registers what is not yet registered, with the folders above it, in one transaction. Throws
    /// bulkhaul::FileFailure(haulbox::NO_SPACE) when the catalogue's disk is full.
    virtual void record(const std::vector<Entry>& entries) = 0;
};

} // namespace centre

#endif
