#ifndef LUMO_CENTRE_BOX_RESERVATIONS_H
#define LUMO_CENTRE_BOX_RESERVATIONS_H

#include "centre/box/Admissions.h"
#include "components/bulkhaul/files/Chunks.h"
#include "haulbox.pb.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace centre {

/// The names that uploads of folders will use next, and whether as files or as folders. Each upload reserves
/// its names in the order of its tree, which is the same for all. So of two with crossed names, a file here
/// where there is a folder, only the one that is further behind meets the other's, and fails. Safe from any
/// thread.
class Reservations
{
public:
    /// The admissions must outlive the object.
    explicit Reservations(Admissions& admissions) : m_Admissions(admissions) {}

    /// Reserves entries below the folder of `upload` in the place of those that it has reserved before.
    /// Throws FileFailure (WRONG_KIND), and reserves nothing, if another upload that is under way has
    /// reserved one of the names as the other kind, and throws what `requireFitting` throws, which looks at
    /// what exists. With too many names in memory it reserves nothing either.
    void reserve(const Admissions::Pointer& upload, const haulbox::ReserveReq& request,
                 const std::function<void()>& requireFitting);

private:
    typedef std::pair<bulkhaul::Digest, bool> Name; ///< digest of a path, and whether it is a folder
    struct Uses
    {
        std::uint32_t files = 0;
        std::uint32_t folders = 0;
    };
    struct Reserved
    {
        std::weak_ptr<const Admission> upload;
        std::vector<Name> names;
    };

    static constexpr std::size_t kMostNames = std::size_t(1) << 19; ///< of all uploads; some 100 bytes each
    /// An upload that was not used for so long has ended, or broke off.
    static constexpr std::chrono::seconds kLongestPause{60};

    void forget(const std::function<bool(const Reserved&)>& which);
    static std::uint32_t& uses(Uses& uses, bool folder) { return folder ? uses.folders : uses.files; }

    Admissions& m_Admissions;
    std::mutex m_Mutex; ///< guards what follows
    std::vector<Reserved> m_Reserved;
    std::map<bulkhaul::Digest, Uses> m_Uses;
    std::size_t m_Names = 0; ///< in m_Reserved
};

} // namespace centre

#endif
