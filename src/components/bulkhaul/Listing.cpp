#include "components/bulkhaul/Listing.h"

#include "components/bulkhaul/files/TreeWalk.h"

namespace bulkhaul {

namespace {

/// A box that lists more does not end.
constexpr std::uint64_t kMostEntries = std::uint64_t(1) << 24;
constexpr std::uint64_t kMostPages = std::uint64_t(1) << 16;

} // namespace

bool Listing::next(haulbox::ListRsp& page)
{
    if (m_Ended)
        return false;
    haulbox::ListReq request;
    request.set_transfer(m_Transfer);
    if (!m_Last.empty())
        request.set_after(m_Last);
    m_Box->askForSure(&haulbox::BoxServices_Stub::list, request, page);
    for (const haulbox::Entry& entry : page.entries()) {
        splitBelow(entry.below()); // throws for one that is not valid, too long or too deep
        // A list in any other order might never end.
        if (!m_Last.empty() && !comesBefore(m_Last, entry.below()))
            throw TransferFailure(kNotUnderstood, "the box listed entries out of order");
        m_Last = entry.below();
    }
    if (page.more() && page.entries().empty())
        throw TransferFailure(kNotUnderstood, "the box announced more entries but sent none");
    m_Entries += static_cast<std::uint64_t>(page.entries_size());
    if (++m_Pages > kMostPages || m_Entries > kMostEntries)
        throw TransferFailure(kNotUnderstood, "the box lists more entries than a folder may have");
    m_Ended = !page.more();
    return true;
}

} // namespace bulkhaul
