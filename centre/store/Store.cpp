#include "centre/store/Store.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/base/Token.h"
#include "centre/database/Database.h"
#include "centre/database/Sql.h"
#include "centre/store/Accounts.h"
#include "centre/store/Schema.h"
#include "components/wirecall/Address.h"
#include "lumo/components/platform/Utf8.h"

#include <cstdint>
#include <filesystem>

namespace centre {

namespace {

const Sql kAddCompany("INSERT INTO company(companyno) VALUES (?) RETURNING id");
const Sql kAddBox("INSERT INTO box(code, address) VALUES (?, ?)");
const Sql kBoxAddress("SELECT address FROM box WHERE code = ?");
const Sql kSetBoxAddress("UPDATE box SET address = ? WHERE code = ?");
const Sql kSetBoxHttp("UPDATE box SET http_url = nullif(?, '') WHERE code = ?");
const Sql kMakeLinkSecret("INSERT INTO link_key(id, secret) VALUES (1, ?) ON CONFLICT DO NOTHING");
const Sql kAddArea("INSERT INTO national_area(area_id, area_name, parent_id) VALUES (?, ?, ?)");
const Sql kCompanyOfNumber("SELECT id FROM company WHERE companyno = ?");
const Sql kAddDisk("INSERT INTO disk(root_path, name, kesta_code, company_id, address_kind)"
                   " VALUES (?, ?, nullif(?, ''), ?, 1) RETURNING id");
const Sql kAddTopFolder("INSERT INTO folder(parent_id, name, disk_id) VALUES (0, ?, ?) RETURNING id");
const Sql kAddMadeUpFiles("WITH RECURSIVE number(i) AS (SELECT 0 WHERE :count > 0 UNION ALL"
                          " SELECT i + 1 FROM number WHERE i + 1 < :count)"
                          " INSERT INTO file(parent_id, name) SELECT :folder,"
                          " 'file-' || substr(CAST(1000000 + i AS TEXT), 2) || '.dat' FROM number");

} // namespace

std::uint32_t insert(Statement& statement, const std::string& taken, const std::string& missing)
{
    try {
        return statement.runForId().value_or(0);
    } catch (const DatabaseError& error) {
        using Kind = DatabaseError::Kind;
        if (error.kind() == Kind::ForeignKey)
            throw Error(ExitCode::Failed, missing);
        if (error.kind() == Kind::Unique || error.kind() == Kind::PrimaryKey)
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

std::string Store::create(const std::string& place, const std::string& companyNo, const std::string& userName)
{
    requireName("the company number", companyNo);
    requireName("the user name", userName);
    Store store(createDatabase(place), place);
    Transaction transaction(*store.m_Database);
    createSchema(*store.m_Database);
    store.addCompany(companyNo);
    std::string token = Accounts(*store.m_Database).addUser(userName, companyNo, Role::Administrator);
    transaction.commit();
    return token;
}

Store::Store(const std::string& place) : Store(openDatabase(place), place)
{
}

Store::Store(std::unique_ptr<Database> database, const std::string& place)
    : m_Database(std::move(database)),
      m_DataFolder(isServer(place) ? std::string() : std::filesystem::canonical(place).string())
{
}

Store::~Store() = default;

std::uint32_t Store::addCompany(const std::string& companyNo)
{
    requireName("the company number", companyNo);
    const auto statement = m_Database->prepare(kAddCompany);
    statement->bind(1, companyNo);
    return insert(*statement, "company " + companyNo + " exists already");
}

std::string Store::addUser(const std::string& userName, const std::string& companyNo, bool mayWrite)
{
    Transaction transaction(*m_Database);
    std::string token =
        Accounts(*m_Database).addUser(userName, companyNo, mayWrite ? Role::Writer : Role::Reader);
    transaction.commit();
    return token;
}

void Store::addBox(const std::string& code, const std::string& address)
{
    requireName("the box code", code);
    wirecall::Address parsed;
    if (!wirecall::parseAddress(address, parsed) || parsed.port == 0)
        throw Error(ExitCode::WrongUse,
                    "not an address of a box: " + escaped(address) + "; an address is HOST:PORT");
    const auto statement = m_Database->prepare(kAddBox);
    statement->bind(1, code);
    statement->bind(2, address);
    insert(*statement, "box " + code + " exists already");
}

std::string Store::boxAddress(const std::string& code)
{
    const auto statement = m_Database->prepare(kBoxAddress);
    statement->bind(1, code);
    if (!statement->step())
        throw Error(ExitCode::Failed, "there is no box " + escaped(code) + "; add-box adds one");
    return statement->string(0);
}

void Store::setBoxAddress(const std::string& code, const std::string& address)
{
    const auto statement = m_Database->prepare(kSetBoxAddress);
    statement->bindAll(address, code);
    statement->run();
}

void Store::setBoxHttp(const std::string& code, const std::string& url)
{
    const auto statement = m_Database->prepare(kSetBoxHttp);
    statement->bindAll(url, code);
    statement->run();
}

std::string Store::linkSecret()
{
    const auto insertion = m_Database->prepare(kMakeLinkSecret);
    insertion->bind(1, newToken());
    insertion->run();
    return m_Database->value("SELECT secret FROM link_key");
}

void Store::addArea(std::uint32_t id, const std::string& name, std::optional<std::uint32_t> parentId)
{
    requireName("the area's name", name);
    if (id == 0 || id == UINT32_MAX)
        throw Error(ExitCode::WrongUse, "an area's identifier must be a number from 1 to 4294967294");
    const auto statement = m_Database->prepare(kAddArea);
    statement->bindAll(id, name, parentId);
    insert(*statement, "area " + std::to_string(id) + " exists already",
           "there is no area " + std::to_string(parentId.value_or(0)) +
               ", which the new area should be part of");
}

std::uint32_t Store::companyId(const std::string& companyNo)
{
    const auto statement = m_Database->prepare(kCompanyOfNumber);
    statement->bind(1, companyNo);
    if (!statement->step())
        throw Error(ExitCode::Failed, "there is no company " + escaped(companyNo) + "; add-company adds one");
    return statement->id(0);
}

std::uint32_t Store::addDisk(const std::string& name, const std::string& rootPath,
                             const std::string& companyNo, const std::string& boxCode)
{
    requireName("the disk's name", name);
    if (name == "." || name == ".." || name.find('/') != std::string::npos)
        throw Error(ExitCode::WrongUse, "the disk's name is one component of a path and can't be " + name);
    Transaction transaction(*m_Database);
    const auto disk = m_Database->prepare(kAddDisk);
    disk->bind(1, rootPath);
    disk->bind(2, name);
    disk->bind(3, boxCode);
    disk->bind(4, companyId(companyNo));
    const std::uint32_t diskId = insert(*disk, "disk " + name + " exists already");
    const auto folder = m_Database->prepare(kAddTopFolder);
    folder->bind(1, name);
    folder->bind(2, diskId);
    const std::uint32_t folderId = folder->runForId().value();
    transaction.commit();
    return folderId;
}

void Store::addMadeUpFiles(std::uint32_t folderId, std::uint32_t count)
{
    const auto statement = m_Database->prepare(kAddMadeUpFiles);
    statement->bindAll(count, folderId);
    statement->run();
}

} // namespace centre
