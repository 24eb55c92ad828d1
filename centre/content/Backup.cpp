#include "centre/content/Backup.h"

#include "centre/base/Error.h"
#include "centre/store/Schema.h"

#include <filesystem>
#include <memory>

namespace centre {

namespace {

void requireWhole(SqliteDatabase& database, const std::string& file)
{
    requireKnown(database, file);
    if (const std::string problem = database.value("PRAGMA integrity_check(1)"); problem != "ok")
        throw Error(ExitCode::Failed, file + " is damaged: " + problem);
}

} // namespace

void backUp(const std::string& dataFolder, const std::string& file)
{
    const auto database = openFolder(dataFolder);
    if (std::filesystem::exists(file))
        throw Error(ExitCode::Failed, file + " exists already");
    const std::string part = file + ".part";
    try {
        std::filesystem::remove(part);
        {
            SqliteDatabase backup(part, SqliteDatabase::Open::Create);
            backup.copyFrom(*database);
            backup.execute("PRAGMA journal_mode = DELETE"); // one file, without a -wal beside it
            requireWhole(backup, part);
        }
        std::filesystem::permissions(part, std::filesystem::perms::owner_read |
                                               std::filesystem::perms::owner_write);
        std::filesystem::rename(part, file);
    } catch (const DatabaseError& exception) {
        std::filesystem::remove(part);
        throw Error(ExitCode::Failed, "can't write " + file + ": " + exception.what());
    }
}

void restore(const std::string& dataFolder, const std::string& file)
{
    try {
        SqliteDatabase backup(file, SqliteDatabase::Open::ReadOnly);
        requireWhole(backup, file);
        const auto database = std::filesystem::exists(dataFolder + "/centre.db") ? openFolder(dataFolder)
                                                                                 : createFolder(dataFolder);
        database->copyFrom(backup);
        database->execute("PRAGMA journal_mode = WAL");
    } catch (const DatabaseError& exception) {
        throw Error(ExitCode::Failed, "can't restore " + file + ": " + exception.what());
    }
    openFolder(dataFolder); // brings the tables of an earlier version up to date
}

} // namespace centre
