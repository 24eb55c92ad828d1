#ifndef LUMO_CENTRE_STORE_OWNERSHIP_H
#define LUMO_CENTRE_STORE_OWNERSHIP_H

#include "centre/store/ConnectionPool.h"

#include <cstdint>
#include <string>

namespace centre {

/// Throws Error(Failed) unless the record exists and belongs to the user's company: a folder or file by its
/// disk, a record of the image catalogue by its project. `type` is an ENUM_DATA_TYPE, as requests have it.
void requireOwn(Connection& connection, const User& user, int type, std::uint32_t id);

/// Throws Error(Failed) unless the user may change the catalogue.
void requireWriter(const User& user);

} // namespace centre

#endif
