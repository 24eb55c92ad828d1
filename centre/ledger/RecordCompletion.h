#ifndef LUMO_CENTRE_LEDGER_RECORDCOMPLETION_H
#define LUMO_CENTRE_LEDGER_RECORDCOMPLETION_H

#include "centre/base/Cancellation.h"
#include "centre/store/ConnectionPool.h"
#include "centre/store/RecordWriter.h"
#include "ledgerserver.pb.h"

#include <cstdint>
#include <functional>

namespace centre {

/// Returns what an image file of the storage catalogue says of itself, as texts of a record: any of `sensor`,
/// `date` and all of `west`, `south`, `east`, `north`. Throws nothing.
using MainFileTexts =
    std::function<RecordTexts(const User& user, std::uint32_t fileId, const IsCanceled& isCanceled)>;

/// Adds to the records of a registration what they lack and their main files have: sensor, date and bounds,
/// each unless the record has a text for it. Reads the files for five seconds at most; the records after that
/// stay as they are, as do those that are not valid.
void completeRecords(ledgerserver::DataUtilBeanReq& request, const User& user, const MainFileTexts& textsOf);

} // namespace centre

#endif
