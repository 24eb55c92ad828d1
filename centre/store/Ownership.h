#ifndef LUMO_CENTRE_STORE_OWNERSHIP_H
#define LUMO_CENTRE_STORE_OWNERSHIP_H

#include "centre/store/ConnectionPool.h"

#include <cstdint>
#include <string>

namespace centre {

/// Returns the SQL condition that the company `:caller_company` may read a record of `table`: a disk, folder
/// or file, or a kind of the image catalogue. `id` is the SQL of the record's identifier: a parameter, or a
/// column with its table's name. Every query of what companies own has this condition or one of the next two.
std::string readable(const std::string& table, const std::string& id);

/// The same for a row of `table`, "disk" or "project", in a query that selects from it.
std::string readableRow(const std::string& table);

/// Returns the SQL condition that a row of `table`, "disk" or "project", is in the list of company
/// `:company_id` that the company `:caller_company` gets.
std::string readableOfCompany(const std::string& table);

/// Whether the record exists and belongs to the user's company. Throws as requireOwn for an unknown type.
bool isOwn(Connection& connection, const User& user, int type, std::uint32_t id);

/// Throws Error(Failed) unless the record exists and belongs to the user's company: a folder or file by its
/// disk, a record of the image catalogue by its project. What belongs to another company is reported as what
/// does not exist. `type` is an ENUM_DATA_TYPE, as requests have it.
void requireOwn(Connection& connection, const User& user, int type, std::uint32_t id);

/// Throws Error(Failed) unless the user may change the catalogue.
void requireWriter(const User& user);

} // namespace centre

#endif
