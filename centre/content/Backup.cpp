#include "centre/content/Backup.h"

#include "centre/base/Error.h"
#include "centre/store/Schema.h"

#include <SQLiteCpp/Backup.h>
#include <SQLiteCpp/Database.h>

#include <filesystem>
#include <memory>

namespace centre {

namespace {

void copy(SQLite::Database& to, SQLite::Database& from)
{
    SQLite::Backup backup(to, from);
    backup.executeStep(-1); // all at once: in steps, it would begin anew after each change
}

void requireWhole(SQLite::Database& database, const std::string& file)
{
    requireKnown(database, file);
    if (const std::string problem = database.execAndGet("PRAGMA integrity_check(1)").getString();
        problem != "ok")
        throw Error(ExitCode::Failed, file + " is damaged: " + problem);
}

} // namespace

void backUp(const std::string& dataFolder, const std::string& file)
{
    const auto database = openDatabase(dataFolder);
    if (std::filesystem::exists(file))
        throw Error(ExitCode::Failed, file + " exists already");
    const std::string part = file + ".part";
    try {
        std::filesystem::remove(part);
        {
            SQLite::Database backup(part, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
            copy(backup, *database);
            backup.exec("PRAGMA journal_mode = DELETE"); // one file, without a -wal beside it
            requireWhole(backup, part);
        }
        std::filesystem::permissions(part, std::filesystem::perms::owner_read |
                                               std::filesystem::perms::owner_write);
        std::filesystem::rename(part, file);
    } catch (const SQLite::Exception& exception) {
        std::filesystem::remove(part);
        throw Error(ExitCode::Failed, "can't write " + file + ": " + exception.what());
    }
}

void restore(const std::string& dataFolder, const std::string& file)
{
    try {
        SQLite::Database backup(file, SQLite::OPEN_READONLY);
        requireWhole(backup, file);
        const auto database = std::filesystem::exists(dataFolder + "/centre.db") ? openDatabase(dataFolder)
                                                                                 : createDatabase(dataFolder);
        copy(*database, backup);
        database->exec("PRAGMA journal_mode = WAL");
    } catch (const SQLite::Exception& exception) {
        throw Error(ExitCode::Failed, "can't restore " + file + ": " + exception.what());
    }
    openDatabase(dataFolder); // brings the tables of an earlier version up to date
}

} // namespace centre
