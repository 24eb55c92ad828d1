#ifndef LUMO_CENTRE_STORE_SCHEMA_H
#define LUMO_CENTRE_STORE_SCHEMA_H

#include <SQLiteCpp/Database.h>

#include <memory>
#include <string>

namespace centre {

/// Opens the database of a data folder for reading and writing, ready for use by one thread at a time:
/// foreign keys on, every commit flushed to the disk, waiting for other writers instead of failing.
/// Tables of an older version are brought to this one first, in one transaction.
/// Throws Error(NoDataFolder) if there is none or it is of a newer version.
std::unique_ptr<SQLite::Database> openDatabase(const std::string& dataFolder);

/// Makes a data folder with a database that has no tables yet. Throws Error if there is one.
std::unique_ptr<SQLite::Database> createDatabase(const std::string& dataFolder);

/// Makes the tables and marks the database as complete; inside the caller's transaction.
void createSchema(SQLite::Database& database);

} // namespace centre

#endif
