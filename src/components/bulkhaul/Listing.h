#ifndef LUMO_BULKHAUL_LISTING_H
#define LUMO_BULKHAUL_LISTING_H

#include "components/bulkhaul/BoxClient.h"

#include <cstdint>
#include <string>

namespace bulkhaul {

/// The pages of a folder's listing, one after the other.
class Listing
{
public:
    Listing(BoxClient& box, const std::string& transfer) : m_Box(&box), m_Transfer(transfer) {}

    /// Gets the next page. Returns false after the last. Throws TransferFailure.
    bool next(haulbox::ListRsp& page);

private:
    BoxClient* m_Box;
    std::string m_Transfer;
    std::string m_Last; ///< entry of the page before
    std::uint64_t m_Entries = 0;
    std::uint64_t m_Pages = 0;
    bool m_Ended = false;
};

} // namespace bulkhaul

#endif
