#ifndef LUMO_CENTRE_STORE_SCHEMA_H
#define LUMO_CENTRE_STORE_SCHEMA_H

#include "centre/database/SqliteDatabase.h"

#include <memory>
#include <string>

namespace centre {

/// Opens the database of a data folder for reading and writing, for one thread at a time: with foreign keys,
/// each commit flushed to the disk, waiting for other writers. Brings tables of an older version up to date
/// first, in one transaction. Throws Error(NoDataFolder) if the folder has no database of lumo-centre or one
/// of a newer version.
std::unique_ptr<SqliteDatabase> openDatabase(const std::string& dataFolder);

/// Throws Error(NoDataFolder) unless a database is one of lumo-centre's, of this version or an earlier one.
/// `name` is for the message.
void requireKnown(Database& database, const std::string& name);

/// Makes a data folder with a database without tables. Throws Error if the folder has a database already.
std::unique_ptr<SqliteDatabase> createDatabase(const std::string& dataFolder);

/// Makes the tables and marks the database as complete; inside the caller's transaction.
void createSchema(Database& database);

} // namespace centre

#endif
