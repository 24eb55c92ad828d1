#ifndef LUMO_CLIENT_CENTRE_H
#define LUMO_CLIENT_CENTRE_H

#include "lumo/client/Entry.h"
#include "lumo/components/platform/Export.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace lumo {

namespace internal {
class Link;
}

/// The centre itself: who the caller is to it, what it knows of storage boxes, areas and versions, and the
/// work that it does on its own side. A light handle that may be copied and used from any thread, with the
/// errors of Catalogue.
class LUMO_EXPORT Centre
{
public:
    explicit Centre(std::shared_ptr<internal::Link> link);

    std::string user() const;
    CompanyId company() const;
    std::string companyNumber() const;

    /// The addresses of the company's storage boxes, by their codes.
    std::map<std::string, std::string> boxes() const;
    /// The names of the areas that the centre gives for an area; throws Error (NotFound).
    std::map<AreaId, std::string> areas(AreaId area) const;

    /// A program or a module, by its number.
    struct Product
    {
        enum class Kind
        {
            Program,
            Module
        };
        Kind kind = Kind::Program;
        std::string number;
    };
    /// What the centre says of a version; what a text means is settled with it.
    struct Version
    {
        std::string name;
        std::string number;
        std::string released;
        std::string box; ///< the code of the storage box with its package
        std::string notes;
    };
    /// The latest version when `number` is empty; throws Error (NotFound).
    Version version(const Product& product, const std::string& number = {}) const;

    /// What the centre found out about an image.
    struct Verdict
    {
        bool passed = false;
        std::string reason; ///< why it did not pass
    };
    /// Has images analysed, and waits for up to `timeout` milliseconds (0: no limit) for the verdicts, in the
    /// order of the files. `sensor` may be empty; with `note` what was found goes into the records of the
    /// files. The verdict of a failed call or a late answer is a failure with its reason. Throws Error (Busy)
    /// while an earlier analysis or copy of this process has no answer: answers can be
    /// distinguished by their order only.
    std::vector<Verdict> analyze(const std::vector<Entry>& files, const std::string& sensor, bool note,
                                 unsigned int timeout) const;

    /// Has a file of the centre's machine copied to a disk or a folder, and to `below`, names of folders that
    /// are made if need be. Waits, and throws Error (Busy), as analyze does; Error (NoAnswer) after
    /// `timeout`.
    void copyIn(const std::string& path, const Entry& folder, const std::string& below, bool overwrite,
                unsigned int timeout) const;
    /// Has a file copied to a path of the centre's machine.
    void copyOut(const Entry& file, const std::string& path, bool overwrite, unsigned int timeout) const;

    /// What the metadata file of a scene says: its texts by their names, in order, a list of one or more
    /// each. `format` is spot5, spot6, alos or ads.
    using Scene = std::vector<std::pair<std::string, std::vector<std::string>>>;
    Scene scene(const std::string& format, FileId file) const;

private:
    std::shared_ptr<internal::Link> m_Link;
};

} // namespace lumo

#endif
