#ifndef LUMO_BULKHAUL_STOREREQUEST_H
#define LUMO_BULKHAUL_STOREREQUEST_H

#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/SourceFile.h"

#include <string>

namespace bulkhaul {

/// Puts a small file into an item; `below` is empty for the target itself.
void fillItem(haulbox::Item& item, const std::string& below, const SourceFile& source);

/// Asks a box to store items with all their data, and counts them. Throws TransferFailure.
void store(const Transfer& transfer, const haulbox::StoreReq& request);

} // namespace bulkhaul

#endif
