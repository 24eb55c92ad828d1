#ifndef LUMO_CENTRE_STORE_OWNERSHIP_H
#define LUMO_CENTRE_STORE_OWNERSHIP_H

#include "centre/store/ConnectionPool.h"

#include <cstdint>
#include <string>

namespace centre {

/// The kinds of the storage catalogue, as data_type_id in requests and links; those of the image catalogue
/// follow, see RecordKind::number.
enum StorageKind
{
    kDiskKind = 0,
    kFolderKind = 1,
    kFileKind = 2
};

/// Throws Error(Failed) unless there is such a record and it belongs to the user's company: a folder or file
/// by its disk, what a project holds by the project.
void requireOwn(Connection& connection, const User& user, int kind, std::uint32_t id);

/// Throws Error(Failed) unless the user may change the catalogue.
void requireWriter(const User& user);

} // namespace centre

#endif
