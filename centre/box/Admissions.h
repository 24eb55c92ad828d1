#ifndef LUMO_CENTRE_BOX_ADMISSIONS_H
#define LUMO_CENTRE_BOX_ADMISSIONS_H

#include "centre/box/BoxCatalogue.h"
#include "centre/box/Handles.h"
#include "haulbox.pb.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>

namespace centre {

/// What a user may do: read or write `path` and everything below it.
struct Admission
{
    std::string path; ///< on the box
    BoxCatalogue::Place place;
    BoxCatalogue::Use use = BoxCatalogue::Use::Read;
    std::string token;                                   ///< of the user
    haulbox::Carried carried;                            ///< with the request
    mutable std::chrono::steady_clock::time_point asked; ///< when the catalogue was asked last

    /// Returns the place of `below`, a path below this one or empty. Throws FileFailure (UNSAFE_NAME) for a
    /// path that is not valid, and REFUSED for one that may not be written.
    BoxCatalogue::Place placeOf(const std::string& below) const;
    /// Returns the path on the box of `below`.
    std::string pathOf(const std::string& below) const;
};

/// Admits transfers and knows them by their handles from then on. Safe from any thread; functions throw
/// FileFailure.
class Admissions
{
public:
    typedef std::shared_ptr<const Admission> Pointer;
    typedef std::chrono::milliseconds Pause;

    /// The catalogue must outlive the object. It is asked about a transfer again when `pause` has passed.
    explicit Admissions(BoxCatalogue& catalogue, Pause pause = Pause(500))
        : m_Catalogue(catalogue), m_Pause(pause)
    {
    }

    /// Asks the catalogue. Throws REFUSED.
    Pointer admit(const std::string& token, const haulbox::Carried& carried, const std::string& path,
                  BoxCatalogue::Use use);
    /// Keeps an admission and returns its handle.
    std::string keep(const std::string& token, Pointer admission);
    /// Returns a kept admission. Throws ENDED unless it is one of that user for that use, and what
    /// requireStill throws.
    Pointer find(const std::string& token, const std::string& transfer, BoxCatalogue::Use use);
    /// Throws REFUSED if the user may do that no longer. Asks the catalogue when the pause has passed since
    /// it was asked last, so that a token, a role or a grant that was taken away ends transfers under way.
    void requireStill(const Admission& admission);

    /// A token and what it is used for.
    typedef std::pair<std::string, BoxCatalogue::Use> Right;
    /// Adds the rights of those that are kept.
    void addRights(std::set<Right>& rights);
    /// Ends those of a right.
    void end(const Right& right);
    /// Whether the catalogue was asked about a transfer, as it is while requests come, in the last `time`.
    bool wasUsedWithin(const Admission& admission, std::chrono::seconds time);

    /// How many are kept.
    std::size_t count();

private:
    static constexpr std::size_t kTransfersOfUser = 1024;

    BoxCatalogue::Place ask(const Admission& admission);

    BoxCatalogue& m_Catalogue;
    const Pause m_Pause;
    std::mutex m_Mutex; ///< also of each `asked`
    Handles<const Admission> m_Transfers{kTransfersOfUser};
};

} // namespace centre

#endif
