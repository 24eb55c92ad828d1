#ifndef LUMO_CENTRE_BOX_ADMISSIONS_H
#define LUMO_CENTRE_BOX_ADMISSIONS_H

#include "centre/box/BoxCatalogue.h"
#include "centre/box/Handles.h"

#include <memory>
#include <mutex>
#include <string>

namespace centre {

/// What a user may do: read or write `path` and everything below it.
struct Admission
{
    std::string path; ///< on the box
    BoxCatalogue::Place place;
    BoxCatalogue::Use use;

    /// Returns the place of `below`, a path below this one or empty. Throws FileFailure (UNSAFE_NAME) for a
    /// path that is not valid, and REFUSED for one that may not be written.
    BoxCatalogue::Place placeOf(const std::string& below) const;
    /// Returns the path on the box of `below`.
    std::string pathOf(const std::string& below) const;
};

/// Admits transfers, each once, and knows them by their handles from then on. Safe from any thread; functions
/// throw FileFailure.
class Admissions
{
public:
    /// The catalogue must outlive the object.
    explicit Admissions(BoxCatalogue& catalogue) : m_Catalogue(catalogue) {}

    /// Asks the catalogue. Throws REFUSED.
    Admission admit(const std::string& token, const haulbox::Carried& carried, const std::string& path,
                    BoxCatalogue::Use use);
    /// Keeps an admission and returns its handle.
    std::string keep(const std::string& token, Admission admission);
    /// Returns a kept admission. Throws ENDED unless it is one of that user for that use.
    std::shared_ptr<const Admission> find(const std::string& token, const std::string& transfer,
                                          BoxCatalogue::Use use);

private:
    static constexpr std::size_t kTransfersOfUser = 1024;

    BoxCatalogue& m_Catalogue;
    std::mutex m_Mutex;
    Handles<const Admission> m_Transfers{kTransfersOfUser};
};

} // namespace centre

#endif
