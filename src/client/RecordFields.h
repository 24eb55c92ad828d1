#ifndef LUMO_CLIENT_RECORDFIELDS_H
#define LUMO_CLIENT_RECORDFIELDS_H

#include "lumo/catalog/ImageData.h"
#include "lumo/client/Record.h"

#include <QList>

#include <vector>

/// Records from those of the manager: all fields in their order, but `presence` and `ctrlFile`. A single one
/// was marked before the call, see RecordText.h.
namespace lumo::internal {

Record recordFrom(const tagDataTable& record);
Record recordFrom(const tagTypeTable& record);
Record recordFrom(const tagKFImageTable& record);
Record recordFrom(const tagSatTable& record);
Record recordFrom(const tagAdsTable& record);
Record recordFrom(const tagCtrlFileTable& record);
Record recordFrom(const tagCtrlPointTable& record);
Record recordFrom(const tagDemTable& record);
Record recordFrom(const tagDsmTable& record);
Record recordFrom(const tagDomTable& record);
Record recordFrom(const tagDlgTable& record);
/// The record that it has.
Record recordFrom(const tagImageData& record);

/// Frees each of the manager's records once it is converted: they are large.
template <class Source>
std::vector<Record> recordsFrom(QList<Source> sources)
{
    std::vector<Record> records;
    records.reserve(static_cast<std::size_t>(sources.size()));
    while (!sources.isEmpty())
        records.push_back(recordFrom(sources.takeFirst()));
    return records;
}

} // namespace lumo::internal

#endif
