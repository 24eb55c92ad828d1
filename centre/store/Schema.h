#ifndef LUMO_CENTRE_STORE_SCHEMA_H
#define LUMO_CENTRE_STORE_SCHEMA_H

#include "centre/database/Database.h"
#include "centre/database/SqliteDatabase.h"

#include <memory>
#include <string>

namespace centre {

// A catalogue is in a data folder, or in a database of a PostgreSQL server. `place` is the folder's path or
// the server's address, "postgresql://...". Errors never show the address's user and password.

/// Whether a place is a server.
bool isServer(const std::string& place);
/// Returns a place for messages.
std::string shownPlace(const std::string& place);

/// Opens a catalogue for reading and writing, for one thread at a time. Brings the tables of an earlier
/// version in a data folder up to date first, in one transaction. Throws Error(NoDataFolder) if there is no
/// catalogue, one of a newer version or, on a server, one of an earlier version.
std::unique_ptr<Database> openDatabase(const std::string& place);
/// The same, without looking at the tables of a server: for a further connection to a catalogue that was
/// opened before, which a newer lumo-centre may have brought up to date since. Throws DatabaseError, too.
std::unique_ptr<Database> openAnother(const std::string& place);
/// The same for a data folder.
std::unique_ptr<SqliteDatabase> openFolder(const std::string& dataFolder);

/// Opens a catalogue as it is. Throws Error(NoDataFolder) if its tables have another version.
std::unique_ptr<Database> openUnchanged(const std::string& place);

/// Throws Error(NoDataFolder) unless a database is one of lumo-centre's, of this version or an earlier one.
/// `name` is for the message.
void requireKnown(Database& database, const std::string& name);

/// Makes a data folder with a database without tables, or opens the empty database of a server. Throws Error
/// if there is a catalogue already, or a database of another program.
std::unique_ptr<Database> createDatabase(const std::string& place);
std::unique_ptr<SqliteDatabase> createFolder(const std::string& dataFolder);

/// The version of the tables that this program makes.
int schemaVersion();
/// Makes the tables, for tests those of an earlier version, and marks the database as complete; inside the
/// caller's transaction.
void createSchema(Database& database, int version = schemaVersion());

/// Brings the tables of an earlier version up to date, in one transaction. Returns the version before.
int migrate(const std::string& place);

} // namespace centre

#endif
