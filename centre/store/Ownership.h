#ifndef LUMO_CENTRE_STORE_OWNERSHIP_H
#define LUMO_CENTRE_STORE_OWNERSHIP_H

#include "centre/store/ConnectionPool.h"

#include <cstdint>
#include <string>

namespace centre {

// What a company may read: what it owns, and the disks and projects that others share with it, with all that
// is on or in them. Every query of what companies own has one of these conditions, in which `:caller_company`
// is the caller's company.

/// Returns the SQL condition that the caller may read a record of `table`: a disk, folder or file, or a kind
/// of the image catalogue. `id` is the SQL of the record's identifier: a parameter, or a column with its
/// table's name.
std::string readable(const std::string& table, const std::string& id);

/// The same for the rows of `table`, "disk" or "project", in a query that lists them.
std::string readableRow(const std::string& table);

/// The same for the list of company `:company_id`: of the caller's own, all that it may read, and of another,
/// what that one shares with it.
std::string readableOfCompany(const std::string& table);

/// The same for the rows of `company`: the caller's, and those that share something with it.
std::string readableCompany();

/// The same for the rows of `image_comment`: the caller's, and those that belong to no company.
std::string readableImageComment();

// Of the next functions `type` is an ENUM_DATA_TYPE, as requests have it. All throw Error(Failed) for a type
// that no record has.

/// Throws Error(Failed), as for a record that does not exist, unless the user may read it.
void requireReadable(Connection& connection, const User& user, int type, std::uint32_t id);

/// Whether the record exists and belongs to the user's company.
bool isOwn(Connection& connection, const User& user, int type, std::uint32_t id);

/// Throws Error(Failed) unless the record exists and belongs to the user's company: a folder or file by its
/// disk, a record of the image catalogue by its project. What belongs to another company is reported as what
/// does not exist, unless it is shared.
void requireOwn(Connection& connection, const User& user, int type, std::uint32_t id);

/// Throws Error(Failed) unless the user may change the catalogue.
void requireWriter(const User& user);

} // namespace centre

#endif
