#include "centre/store/Schema.h"

#include "centre/base/Error.h"
#include "centre/database/PostgresDatabase.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/StorageTree.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>

namespace centre {

namespace {

// A column that goes into a bean has the name of the bean's field. NULL leaves the field absent.
// 0xFFFFFFFF means "none" to the clients, so no record may have it.
// The steps are written with the types and words of SQLite, which other engines replace.
constexpr const char* kVersion1 = R"sql(
CREATE TABLE company (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    companyno TEXT NOT NULL UNIQUE);

CREATE TABLE user (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    username TEXT NOT NULL UNIQUE,
    company_id INTEGER NOT NULL REFERENCES company(id),
    token_hash BLOB NOT NULL UNIQUE);

CREATE TABLE box (
    code TEXT NOT NULL PRIMARY KEY,
    address TEXT NOT NULL) WITHOUT ROWID;

CREATE TABLE disk (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    root_path TEXT NOT NULL,
    name TEXT NOT NULL,
    ref_id INTEGER,
    kesta_code TEXT REFERENCES box(code),
    company_id INTEGER NOT NULL REFERENCES company(id),
    address_kind INTEGER NOT NULL,
    UNIQUE (company_id, name));

CREATE TABLE folder (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    parent_id INTEGER NOT NULL,
    name TEXT NOT NULL,
    long_text TEXT,
    short_text TEXT,
    disk_id INTEGER NOT NULL REFERENCES disk(id),
    parent_ref INTEGER GENERATED ALWAYS AS (nullif(parent_id, 0)) VIRTUAL REFERENCES folder(id),
    UNIQUE (disk_id, parent_id, name));

CREATE TABLE file (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    parent_id INTEGER NOT NULL REFERENCES folder(id),
    name TEXT NOT NULL,
    short_text TEXT,
    long_text TEXT,
    UNIQUE (parent_id, name));

-- An index ends with the row's id, so these have each folder's children in the order of the pages and skip
-- the records before a page inside the index.
CREATE INDEX folder_page ON folder(parent_id);
CREATE INDEX file_page ON file(parent_id);

CREATE TABLE data_folder (
    project_id INTEGER NOT NULL,
    src_id INTEGER NOT NULL REFERENCES folder(id),
    PRIMARY KEY (project_id, src_id)) WITHOUT ROWID;

CREATE TABLE data_file (
    project_id INTEGER NOT NULL,
    file_id INTEGER NOT NULL REFERENCES file(id),
    PRIMARY KEY (project_id, file_id)) WITHOUT ROWID;

-- data_type_id: an ENUM_DATA_TYPE
CREATE TABLE comment_record (
    comment_id INTEGER NOT NULL,
    data_type_id INTEGER NOT NULL,
    record_id INTEGER NOT NULL,
    PRIMARY KEY (comment_id, data_type_id, record_id)) WITHOUT ROWID;
)sql";

// The indexes find the disks and packages that a path leads through.
constexpr const char* kVersion2 = R"sql(
ALTER TABLE user ADD COLUMN may_write INTEGER NOT NULL DEFAULT 1;

CREATE INDEX disk_root ON disk(root_path);

CREATE TABLE national_area (
    area_id INTEGER PRIMARY KEY CHECK (area_id BETWEEN 1 AND 4294967294),
    area_name TEXT NOT NULL,
    parent_id INTEGER REFERENCES national_area(area_id));

CREATE INDEX national_area_parent ON national_area(parent_id);

-- kind: 1 of a program, 2 of a module; place sorts the versions of one number from the first to the latest
CREATE TABLE version (
    kind INTEGER NOT NULL CHECK (kind IN (1, 2)),
    number TEXT NOT NULL,
    place BLOB NOT NULL,
    versionno TEXT NOT NULL,
    name TEXT NOT NULL,
    kesta_code TEXT NOT NULL REFERENCES box(code),
    app_full_path TEXT NOT NULL,
    released TEXT NOT NULL,
    notes TEXT,
    PRIMARY KEY (kind, number, place)) WITHOUT ROWID;

CREATE INDEX version_box ON version(kesta_code);
CREATE INDEX version_path ON version(app_full_path);
)sql";

// A record has at most one comment and any number of image comments, which belong to no company. The step
// adds the image comments of the existing marks.
constexpr const char* kVersion4 = R"sql(
CREATE TABLE comment (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    company_id INTEGER NOT NULL REFERENCES company(id),
    commentcontent TEXT NOT NULL,
    commentstate TEXT NOT NULL,
    UNIQUE (company_id, commentcontent, commentstate));

CREATE TABLE image_comment (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    commentcontent TEXT NOT NULL,
    commentstate TEXT NOT NULL,
    UNIQUE (commentcontent, commentstate));

INSERT INTO image_comment SELECT DISTINCT comm_id, 'mark ' || comm_id, '' FROM image_mark;

DELETE FROM comment_record WHERE EXISTS (
    SELECT 1 FROM comment_record AS other WHERE other.data_type_id = comment_record.data_type_id
    AND other.record_id = comment_record.record_id AND other.comment_id < comment_record.comment_id);

CREATE UNIQUE INDEX comment_record_record ON comment_record(data_type_id, record_id);
CREATE INDEX data_folder_folder ON data_folder(src_id);
CREATE INDEX data_file_file ON data_file(file_id);
)sql";

// What is known about the content of a file, see FileContent.
constexpr const char* kVersion5 = R"sql(
ALTER TABLE file ADD COLUMN size BIGINT;
ALTER TABLE file ADD COLUMN digest TEXT;
)sql";

// Users have roles instead of being read-only or not, and tokens of their own. Times are seconds since 1970
// in UTC; a token without `until` is valid for good. An image comment is that of a company or, without one,
// of all: of the only company, where there is one.
constexpr const char* kVersion6 = R"sql(
CREATE TABLE user_with_role (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    username TEXT NOT NULL UNIQUE,
    company_id INTEGER NOT NULL REFERENCES company(id),
    role TEXT NOT NULL CHECK (role IN ('reader', 'writer', 'administrator')));
CREATE TABLE token_of_user AS SELECT id, token_hash FROM user;
INSERT INTO user_with_role
    SELECT id, username, company_id, CASE may_write WHEN 0 THEN 'reader' ELSE 'writer' END FROM user;
DROP TABLE user;
ALTER TABLE user_with_role RENAME TO user;

CREATE TABLE token (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    user_id INTEGER NOT NULL REFERENCES user(id),
    name TEXT NOT NULL,
    created INTEGER NOT NULL,
    until INTEGER,
    revoked INTEGER,
    token_hash BLOB NOT NULL UNIQUE);
INSERT INTO token(user_id, name, created, token_hash)
    SELECT id, 'first', unixepoch(), token_hash FROM token_of_user ORDER BY id;
DROP TABLE token_of_user;
CREATE UNIQUE INDEX token_name ON token(user_id, name) WHERE revoked IS NULL;
CREATE INDEX token_user ON token(user_id);

CREATE TABLE disk_share (
    company_id INTEGER NOT NULL REFERENCES company(id),
    disk_id INTEGER NOT NULL REFERENCES disk(id),
    PRIMARY KEY (company_id, disk_id)) WITHOUT ROWID;
CREATE TABLE project_share (
    company_id INTEGER NOT NULL REFERENCES company(id),
    project_id INTEGER NOT NULL REFERENCES project(project_id),
    PRIMARY KEY (company_id, project_id)) WITHOUT ROWID;

CREATE TABLE image_comment_of_company (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    company_id INTEGER REFERENCES company(id),
    commentcontent TEXT NOT NULL,
    commentstate TEXT NOT NULL);
INSERT INTO image_comment_of_company
    SELECT id, (SELECT CASE count(*) WHEN 1 THEN min(company.id) END FROM company), commentcontent, commentstate
    FROM image_comment;
DROP TABLE image_comment;
ALTER TABLE image_comment_of_company RENAME TO image_comment;
CREATE UNIQUE INDEX image_comment_text ON image_comment(coalesce(company_id, 0), commentcontent, commentstate);
)sql";

// Where a box serves its files over HTTP, and the key that signs links to them.
constexpr const char* kVersion7 = R"sql(
ALTER TABLE box ADD COLUMN http_url TEXT;

CREATE TABLE link_key (
    id INTEGER PRIMARY KEY CHECK (id = 1),
    secret TEXT NOT NULL);
)sql";

// description: a centre.image.Image as JSON, see image/image_process.proto
constexpr const char* kVersion8 = R"sql(
CREATE TABLE image_description (
    file_id INTEGER NOT NULL PRIMARY KEY REFERENCES file(id) ON DELETE CASCADE,
    description TEXT NOT NULL);
)sql";

constexpr int kSchemaVersion = 8;

/// What a server has in addition to version 1: indexes that end with the row's id, and the functions that a
/// connection to SQLite defines.
std::string onServerWithVersion1()
{
    const std::string path = fullPath("SELECT id, substr(name, 1, 0) FROM folder WHERE id = wanted");
    const auto function = [&path](const std::string& name, const std::string& column) {
        return "CREATE FUNCTION " + name + "(wanted bigint) RETURNS text LANGUAGE sql STABLE AS $$ SELECT " +
               column + " FROM (" + path + ") AS place $$; ";
    };
    return "DROP INDEX folder_page; CREATE INDEX folder_page ON folder(parent_id, id);"
           " DROP INDEX file_page; CREATE INDEX file_page ON file(parent_id, id); " +
           function("folder_path", "full_path") + function("folder_box", "kesta_code");
}

/// Returns the SQL that leads from a version of the tables to the next.
std::string stepFrom(int version, const Dialect& dialect)
{
    // The tables of the image catalogue follow the beans, whose fields have their places for good.
    const std::string steps[kSchemaVersion] = {
        kVersion1, kVersion2, recordTables(dialect), kVersion4, kVersion5 + mainFileIndexes(), kVersion6,
        kVersion7, kVersion8};
    return steps[version];
}

std::string databasePath(const std::string& dataFolder)
{
    return dataFolder + "/centre.db";
}

Error notOurs(const std::string& name)
{
    return {ExitCode::NoDataFolder, name + " is not a database of lumo-centre"};
}

void takeSteps(Database& database, int from, int to)
{
    for (int version = from; version < to; ++version) {
        database.executeTables(stepFrom(version, database.dialect()));
        if (version == 0 && !database.dialect().hasRowIds)
            database.execute(onServerWithVersion1());
        database.setVersion(version + 1);
    }
}

void migrate(Database& database)
{
    Transaction transaction(database);
    database.lockTables();
    takeSteps(database, database.version(), kSchemaVersion); // anew: another process may have been faster
    transaction.commit();
}

/// The version of the tables; 0 for an empty database and -1 for one of another program.
int versionOf(Database& database)
{
    try {
        return database.version();
    } catch (const DatabaseError& error) {
        if (error.kind() == DatabaseError::Kind::NotADatabase)
            return -1;
        throw;
    }
}

std::unique_ptr<SqliteDatabase> open(const std::string& file, SqliteDatabase::Open how)
{
    try {
        return std::make_unique<SqliteDatabase>(file, how);
    } catch (const DatabaseError& error) {
        if (error.kind() == DatabaseError::Kind::NotADatabase)
            throw notOurs(file);
        throw;
    }
}

std::unique_ptr<Database> connect(const std::string& url)
{
    try {
        return std::make_unique<PostgresDatabase>(url);
    } catch (const DatabaseError& error) {
        const bool isLost = error.kind() == DatabaseError::Kind::Lost;
        throw Error(isLost ? ExitCode::Failed : ExitCode::NoDataFolder, error.what());
    }
}

/// Throws unless a database has tables of this version or, if that is allowed, of an earlier one.
void requireTables(Database& database, const std::string& name, bool mayBeEarlier)
{
    const int version = versionOf(database);
    if (version == 0)
        throw Error(ExitCode::NoDataFolder,
                    name + " has no tables of lumo-centre; make them with: lumo-centre init --database URL");
    requireKnown(database, name);
    if (version < kSchemaVersion && !mayBeEarlier)
        throw Error(ExitCode::NoDataFolder, "the tables of " + name + " have version " +
                                                std::to_string(version) + ", this lumo-centre needs " +
                                                std::to_string(kSchemaVersion) +
                                                "; bring them up to date with: lumo-centre migrate");
}

} // namespace

bool isServer(const std::string& place)
{
    return isPostgresUrl(place);
}

std::string shownPlace(const std::string& place)
{
    return isServer(place) ? shownUrl(place) : place;
}

int schemaVersion()
{
    return kSchemaVersion;
}

void requireKnown(Database& database, const std::string& name)
{
    const int version = versionOf(database);
    if (version <= 0)
        throw notOurs(name);
    if (version > kSchemaVersion)
        throw Error(ExitCode::NoDataFolder,
                    name + " was made by a newer lumo-centre: its tables have version " +
                        std::to_string(version) + ", this lumo-centre knows versions up to " +
                        std::to_string(kSchemaVersion));
}

namespace {

/// Opens the database of a data folder, of this or an earlier version.
std::unique_ptr<SqliteDatabase> openKnown(const std::string& dataFolder)
{
    const std::string path = databasePath(dataFolder);
    if (!std::filesystem::exists(path))
        throw Error(ExitCode::NoDataFolder,
                    dataFolder + " is not a data folder; make one with: lumo-centre init " + dataFolder);
    auto database = open(path, SqliteDatabase::Open::ReadWrite);
    if (versionOf(*database) <= 0)
        throw notOurs(path);
    requireKnown(*database, dataFolder);
    return database;
}

} // namespace

std::unique_ptr<SqliteDatabase> openFolder(const std::string& dataFolder)
{
    auto database = openKnown(dataFolder);
    if (database->version() < kSchemaVersion)
        migrate(*database);
    return database;
}

std::unique_ptr<Database> openUnchanged(const std::string& place)
{
    if (isServer(place))
        return openDatabase(place);
    auto database = openKnown(place);
    requireTables(*database, place, false);
    return database;
}

std::unique_ptr<Database> openDatabase(const std::string& place)
{
    if (!isServer(place))
        return openFolder(place);
    auto database = connect(place);
    requireTables(*database, shownPlace(place), false);
    return database;
}

std::unique_ptr<Database> openAnother(const std::string& place)
{
    if (!isServer(place))
        return openFolder(place);
    return std::make_unique<PostgresDatabase>(place);
}

std::unique_ptr<SqliteDatabase> createFolder(const std::string& dataFolder)
{
    std::error_code error;
    const bool made = std::filesystem::create_directories(dataFolder, error);
    if (error)
        throw Error(ExitCode::Failed, "can't make " + dataFolder + ": " + error.message());
    if (made && ::chmod(dataFolder.c_str(), S_IRWXU) != 0)
        throw Error(ExitCode::Failed, "can't protect " + dataFolder + ": " + std::strerror(errno));
    auto database = open(databasePath(dataFolder), SqliteDatabase::Open::Create);
    const int version = versionOf(*database);
    if (version > 0)
        throw Error(ExitCode::NoDataFolder, dataFolder + " is a data folder already; nothing was changed");
    if (version < 0)
        throw Error(ExitCode::NoDataFolder, databasePath(dataFolder) + " is a database of another program");
    database->execute("PRAGMA journal_mode = WAL");
    return database;
}

std::unique_ptr<Database> createDatabase(const std::string& place)
{
    if (!isServer(place))
        return createFolder(place);
    auto database = connect(place);
    const int version = versionOf(*database);
    if (version > 0)
        throw Error(ExitCode::NoDataFolder,
                    shownPlace(place) + " has tables of lumo-centre already; nothing was changed");
    if (version < 0)
        throw Error(ExitCode::NoDataFolder, shownPlace(place) + " is a database of another program");
    return database;
}

void createSchema(Database& database, int version)
{
    database.lockTables();
    if (database.version() > 0)
        throw Error(ExitCode::NoDataFolder, "another process makes the tables already");
    takeSteps(database, 0, version);
}

int migrate(const std::string& place)
{
    const std::unique_ptr<Database> database = isServer(place) ? connect(place) : openKnown(place);
    requireTables(*database, shownPlace(place), true);
    const int before = database->version();
    migrate(*database);
    return before;
}

} // namespace centre
