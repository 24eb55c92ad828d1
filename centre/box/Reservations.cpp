#include "centre/box/Reservations.h"

#include "components/bulkhaul/files/FileFailure.h"

#include <algorithm>
#include <string>

namespace centre {

using bulkhaul::digestOf;
using bulkhaul::FileFailure;

void Reservations::reserve(const Admissions::Pointer& upload, const haulbox::ReserveReq& request,
                           const std::function<void()>& requireFitting)
{
    Reserved reserved{upload, {}};
    const std::lock_guard<std::mutex> lock(m_Mutex);
    forget([&](const Reserved& other) {
        const Admissions::Pointer live = other.upload.lock();
        return !live || live == upload || !m_Admissions.wasUsedWithin(*live, kLongestPause);
    });
    for (const haulbox::Entry& entry : request.entries()) {
        const std::string path = upload->pathOf(entry.below());
        reserved.names.emplace_back(digestOf(path), entry.folder());
        const auto found = m_Uses.find(reserved.names.back().first);
        if (found != m_Uses.end() && uses(found->second, !entry.folder()) > 0)
            throw FileFailure(haulbox::WRONG_KIND, path + ": another upload makes a " +
                                                       (entry.folder() ? "file" : "folder") +
                                                       " of this name");
    }
    requireFitting();
    if (reserved.names.empty() || m_Names + reserved.names.size() > kMostNames)
        return;
    for (const auto& [path, folder] : reserved.names)
        ++uses(m_Uses[path], folder);
    m_Names += reserved.names.size();
    m_Reserved.push_back(std::move(reserved));
}

void Reservations::forget(const std::function<bool(const Reserved&)>& which)
{
    const auto first = std::partition(m_Reserved.begin(), m_Reserved.end(),
                                      [&](const Reserved& reserved) { return !which(reserved); });
    for (auto each = first; each != m_Reserved.end(); ++each) {
        m_Names -= each->names.size();
        for (const auto& [path, folder] : each->names) {
            const auto found = m_Uses.find(path);
            --uses(found->second, folder);
            if (found->second.files == 0 && found->second.folders == 0)
                m_Uses.erase(found);
        }
    }
    m_Reserved.erase(first, m_Reserved.end());
}

} // namespace centre
