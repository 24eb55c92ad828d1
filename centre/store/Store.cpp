#include "centre/store/Store.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/base/Token.h"
#include "centre/store/Schema.h"
#include "components/wirecall/Address.h"
#include "lumo/components/platform/Utf8.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>
#include <sqlite3.h>

#include <cstdint>
#include <filesystem>

namespace centre {

namespace {

std::uint32_t lastId(SQLite::Database& database)
{
    return static_cast<std::uint32_t>(database.getLastInsertRowid());
}

} // namespace

void insert(SQLite::Statement& statement, const std::string& taken, const std::string& missing)
{
    try {
        statement.exec();
    } catch (const SQLite::Exception& exception) {
        const int code = exception.getExtendedErrorCode();
        if (code == SQLITE_CONSTRAINT_FOREIGNKEY)
            throw Error(ExitCode::Failed, missing);
        if (code == SQLITE_CONSTRAINT_UNIQUE || code == SQLITE_CONSTRAINT_PRIMARYKEY)
            throw Error(ExitCode::Failed, taken);
        throw;
    }
}

void requireName(const std::string& what, const std::string& name)
{
    if (name.empty())
        throw Error(ExitCode::WrongUse, what + " must not be empty");
    if (!platform::isUtf8(name) || escaped(name) != name)
        throw Error(ExitCode::WrongUse, what + " must be UTF-8 without control characters: " + escaped(name));
}

std::string Store::create(const std::string& dataFolder, const std::string& companyNo,
                          const std::string& userName)
{
    requireName("the company number", companyNo);
    requireName("the user name", userName);
    Store store(createDatabase(dataFolder));
    SQLite::Transaction transaction(*store.m_Database, SQLite::TransactionBehavior::IMMEDIATE);
    createSchema(*store.m_Database);
    store.addCompany(companyNo);
    std::string token = store.addUser(userName, companyNo);
    transaction.commit();
    return token;
}

Store::Store(const std::string& dataFolder) : m_Database(openDatabase(dataFolder))
{
}

Store::Store(std::unique_ptr<SQLite::Database> database) : m_Database(std::move(database))
{
}

Store::~Store() = default;

std::uint32_t Store::addCompany(const std::string& companyNo)
{
    requireName("the company number", companyNo);
    SQLite::Statement statement(*m_Database, "INSERT INTO company(companyno) VALUES (?)");
    statement.bind(1, companyNo);
    insert(statement, "company " + companyNo + " exists already");
    return lastId(*m_Database);
}

std::string Store::addUser(const std::string& userName, const std::string& companyNo, bool mayWrite)
{
    requireName("the user name", userName);
    std::string token = newToken();
    const std::string hash = tokenHash(token);
    SQLite::Statement statement(
        *m_Database, "INSERT INTO user(username, company_id, may_write, token_hash) VALUES (?, ?, ?, ?)");
    SQLite::bind(statement, userName, companyId(companyNo), mayWrite ? 1 : 0);
    statement.bind(4, hash.data(), static_cast<int>(hash.size()));
    insert(statement, "user " + userName + " exists already");
    return token;
}

void Store::addBox(const std::string& code, const std::string& address)
{
    requireName("the box code", code);
    wirecall::Address parsed;
    if (!wirecall::parseAddress(address, parsed) || parsed.port == 0)
        throw Error(ExitCode::WrongUse,
                    "not an address of a box: " + escaped(address) + "; an address is HOST:PORT");
    SQLite::Statement statement(*m_Database, "INSERT INTO box(code, address) VALUES (?, ?)");
    statement.bind(1, code);
    statement.bind(2, address);
    insert(statement, "box " + code + " exists already");
}

std::string Store::boxAddress(const std::string& code)
{
    SQLite::Statement statement(*m_Database, "SELECT address FROM box WHERE code = ?");
    statement.bind(1, code);
    if (!statement.executeStep())
        throw Error(ExitCode::Failed, "there is no box " + escaped(code) + "; add-box adds one");
    return statement.getColumn(0).getString();
}

void Store::setBoxAddress(const std::string& code, const std::string& address)
{
    SQLite::Statement statement(*m_Database, "UPDATE box SET address = ? WHERE code = ?");
    SQLite::bind(statement, address, code);
    statement.exec();
}

void Store::addArea(std::uint32_t id, const std::string& name, std::optional<std::uint32_t> parentId)
{
    requireName("the area's name", name);
    if (id == 0 || id == UINT32_MAX)
        throw Error(ExitCode::WrongUse, "an area's identifier must be a number from 1 to 4294967294");
    SQLite::Statement statement(*m_Database,
                                "INSERT INTO national_area(area_id, area_name, parent_id) VALUES (?, ?, ?)");
    SQLite::bind(statement, id, name);
    if (parentId)
        statement.bind(3, *parentId);
    insert(statement, "area " + std::to_string(id) + " exists already",
           "there is no area " + std::to_string(parentId.value_or(0)) +
               ", which the new area should be part of");
}

std::uint32_t Store::companyId(const std::string& companyNo)
{
    SQLite::Statement statement(*m_Database, "SELECT id FROM company WHERE companyno = ?");
    statement.bind(1, companyNo);
    if (!statement.executeStep())
        throw Error(ExitCode::Failed, "there is no company " + escaped(companyNo) + "; add-company adds one");
    return statement.getColumn(0).getUInt();
}

std::uint32_t Store::addDisk(const std::string& name, const std::string& rootPath,
                             const std::string& companyNo, const std::string& boxCode)
{
    requireName("the disk's name", name);
    if (name == "." || name == ".." || name.find('/') != std::string::npos)
        throw Error(ExitCode::WrongUse, "the disk's name is one component of a path and can't be " + name);
    SQLite::Transaction transaction(*m_Database, SQLite::TransactionBehavior::IMMEDIATE);
    SQLite::Statement disk(*m_Database,
                           "INSERT INTO disk(root_path, name, kesta_code, company_id, address_kind)"
                           " VALUES (?, ?, nullif(?, ''), ?, 1)");
    disk.bind(1, rootPath);
    disk.bind(2, name);
    disk.bind(3, boxCode);
    disk.bind(4, companyId(companyNo));
    insert(disk, "disk " + name + " exists already");
    const std::uint32_t diskId = lastId(*m_Database);
    SQLite::Statement folder(*m_Database, "INSERT INTO folder(parent_id, name, disk_id) VALUES (0, ?, ?)");
    folder.bind(1, name);
    folder.bind(2, diskId);
    folder.exec();
    const std::uint32_t folderId = lastId(*m_Database);
    transaction.commit();
    return folderId;
}

std::string Store::dataFolder() const
{
    const std::filesystem::path file = std::filesystem::absolute(m_Database->getFilename());
    return std::filesystem::canonical(file.parent_path()).string();
}

void Store::addMadeUpFiles(std::uint32_t folderId, std::uint32_t count)
{
    SQLite::Statement statement(
        *m_Database,
        "WITH RECURSIVE number(i) AS (SELECT 0 WHERE :count > 0 UNION ALL"
        " SELECT i + 1 FROM number WHERE i + 1 < :count)"
        " INSERT INTO file(parent_id, name) SELECT :folder, printf('file-%06d.dat', i) FROM number");
    statement.bind(":count", count);
    statement.bind(":folder", folderId);
    statement.exec();
}

} // namespace centre
