#include "centre/box/Admissions.h"

#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/Folder.h"

#include <climits>
#include <utility>

namespace centre {

using bulkhaul::FileFailure;

namespace {

using Clock = std::chrono::steady_clock;

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

BoxCatalogue::Place Admissions::ask(const Admission& admission)
{
    std::string reason;
    auto place = m_Catalogue.admit(admission.token, admission.carried, admission.path, admission.use, reason);
    if (!place)
        throw FileFailure(haulbox::REFUSED, reason);
    return std::move(*place);
}

Admissions::Pointer Admissions::admit(const std::string& token, const haulbox::Carried& carried,
                                      const std::string& path, BoxCatalogue::Use use)
{
    auto admission = std::make_shared<Admission>();
    admission->path = path;
    admission->use = use;
    admission->token = token;
    admission->carried = carried;
    admission->asked = Clock::now();
    admission->place = ask(*admission);
    return admission;
}

std::string Admissions::keep(const std::string& token, Pointer admission)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    Handles<const Admission>::Ended ended;
    return m_Transfers.add(token, std::move(admission), ended);
}

Admissions::Pointer Admissions::find(const std::string& token, const std::string& transfer,
                                     BoxCatalogue::Use use)
{
    Pointer admission;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        admission = m_Transfers.find(transfer, token);
    }
    if (!admission || admission->use != use)
        throw FileFailure(haulbox::ENDED, "the box does not know this transfer any more");
    requireStill(*admission);
    return admission;
}

void Admissions::requireStill(const Admission& admission)
{
    const Clock::time_point now = Clock::now();
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (now - admission.asked < m_Pause)
            return;
    }
    ask(admission);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    admission.asked = now;
}

void Admissions::addRights(std::set<Right>& rights)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Transfers.forEach([&rights](const Admission& each) { rights.emplace(each.token, each.use); });
}

void Admissions::end(const Right& right)
{
    Handles<const Admission>::Ended ended;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Transfers.endIf([&right](const Admission& each, auto) { return Right(each.token, each.use) == right; },
                      ended);
}

bool Admissions::wasUsedWithin(const Admission& admission, std::chrono::seconds time)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return Clock::now() - admission.asked < time;
}

std::size_t Admissions::count()
{
    Handles<const Admission>::Ended ended;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Transfers.count(ended);
}

} // namespace centre
