#include "centre/box/Admissions.h"

#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/Folder.h"

#include <climits>

namespace centre {

using bulkhaul::FileFailure;

namespace {

std::string joined(const std::string& path, const std::string& below)
{
    if (path.empty() || below.empty())
        return path + below;
    return path.back() == '/' ? path + below : path + "/" + below;
}

} // namespace

std::string Admission::pathOf(const std::string& below) const
{
    return joined(path, below);
}

BoxCatalogue::Place Admission::placeOf(const std::string& below) const
{
    bulkhaul::splitBelow(below); // throws for an unsafe one
    const std::string target = pathOf(below);
    if (target.size() >= PATH_MAX)
        throw FileFailure(haulbox::UNSAFE_NAME,
                          "a path of " + std::to_string(target.size()) + " bytes is too long");
    for (const std::string& closed : place.readOnly)
        if (isAtOrBelow(closed, target))
            throw FileFailure(haulbox::REFUSED, escaped(target) + " is in the package of a version, where"
                                                                  " nothing can be written");
    return {place.root, joined(place.below, below)};
}

Admission Admissions::admit(const std::string& token, const haulbox::Carried& carried,
                            const std::string& path, BoxCatalogue::Use use)
{
    std::string reason;
    auto place = m_Catalogue.admit(token, carried, path, use, reason);
    if (!place)
        throw FileFailure(haulbox::REFUSED, reason);
    return {path, std::move(*place), use};
}

std::string Admissions::keep(const std::string& token, Admission admission)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    Handles<const Admission>::Ended ended;
    return m_Transfers.add(token, std::make_shared<const Admission>(std::move(admission)), ended);
}

std::shared_ptr<const Admission> Admissions::find(const std::string& token, const std::string& transfer,
                                                  BoxCatalogue::Use use)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    auto admission = m_Transfers.find(transfer, token);
    if (!admission || admission->use != use)
        throw FileFailure(haulbox::ENDED, "the box does not know this transfer any more");
    return admission;
}

} // namespace centre
