#include "centre/store/Accounts.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/base/Token.h"
#include "centre/database/Database.h"
#include "centre/database/Sql.h"
#include "centre/store/Store.h"

#include <array>
#include <ctime>

namespace centre {

namespace {

const Sql kAddUser("INSERT INTO \"user\"(username, company_id, role) VALUES (?, ?, ?)");
const Sql kAddToken("INSERT INTO token(user_id, name, created, until, token_hash) VALUES (?, ?, ?, ?, ?)");

const std::array<const char*, 3> kRoles = {"reader", "writer", "administrator"};

template <class... Values>
int run(Database& database, const std::string& sql, const Values&... values)
{
    const auto statement = database.prepare(sql);
    statement->bindAll(values...);
    return statement->run();
}

/// Returns the first column of the first row.
template <class... Values>
std::optional<std::uint32_t> find(Database& database, const std::string& sql, const Values&... values)
{
    const auto statement = database.prepare(sql);
    statement->bindAll(values...);
    return statement->step() ? std::optional(statement->id(0)) : std::nullopt;
}

struct Shareable
{
    std::string kind;
    std::string idColumn;
    std::string nameColumn;
};

Shareable shareable(Accounts::Shared what)
{
    return what == Accounts::Shared::Disk ? Shareable{"disk", "id", "name"}
                                          : Shareable{"project", "project_id", "project_name"};
}

Error noSuchToken(const std::string& user, const std::string& name)
{
    return {ExitCode::Failed,
            "user " + escaped(user) + " has no valid token " + escaped(name) + "; list-tokens lists them"};
}

} // namespace

std::string nameOf(Role role)
{
    return kRoles.at(static_cast<std::size_t>(role));
}

std::optional<Role> roleNamed(const std::string& name)
{
    for (std::size_t role = 0; role < kRoles.size(); ++role)
        if (name == kRoles.at(role))
            return static_cast<Role>(role);
    return std::nullopt;
}

std::string Accounts::addUser(const std::string& user, const std::string& companyNo, Role role,
                              const TokenTerms& terms)
{
    requireName("the user name", user);
    const auto addition = m_Database.prepare(kAddUser);
    addition->bindAll(user, companyId(companyNo), nameOf(role));
    insert(*addition, "user " + user + " exists already; add-token adds another token");
    return addToken(user, terms);
}

void Accounts::setRole(const std::string& user, Role role)
{
    run(m_Database, "UPDATE \"user\" SET role = ? WHERE id = ?", nameOf(role), userId(user));
}

void Accounts::removeUser(const std::string& user)
{
    const std::uint32_t id = userId(user);
    run(m_Database, "DELETE FROM token WHERE user_id = ?", id);
    run(m_Database, "DELETE FROM \"user\" WHERE id = ?", id);
}

std::string Accounts::addToken(const std::string& user, const TokenTerms& terms)
{
    requireName("the token's name", terms.name);
    std::string token = newToken();
    const std::string hash = tokenHash(token);
    const auto addition = m_Database.prepare(kAddToken);
    addition->bindAll(userId(user), terms.name, std::time(nullptr), terms.until);
    addition->bindBytes(5, hash);
    insert(*addition, "user " + user + " has a token " + terms.name +
                          " already; renew-token renews it, revoke-token ends it");
    return token;
}

void Accounts::renewToken(const std::string& user, const TokenTerms& terms)
{
    const char* sql = "UPDATE token SET until = ? WHERE user_id = ? AND name = ? AND revoked IS NULL";
    if (run(m_Database, sql, terms.until, userId(user), terms.name) == 0)
        throw noSuchToken(user, terms.name);
}

std::string Accounts::replaceToken(const std::string& user, const TokenTerms& terms)
{
    revokeToken(user, terms.name);
    return addToken(user, terms);
}

void Accounts::revokeToken(const std::string& user, const std::string& name)
{
    const char* sql = "UPDATE token SET revoked = ? WHERE user_id = ? AND name = ? AND revoked IS NULL";
    if (run(m_Database, sql, std::time(nullptr), userId(user), name) == 0)
        throw noSuchToken(user, name);
}

void Accounts::share(Shared what, const std::string& name, const std::string& ownerNo,
                     const std::string& companyNo)
{
    const Shareable shared = shareable(what);
    const std::uint32_t owner = companyId(ownerNo);
    const std::uint32_t company = companyId(companyNo);
    if (owner == company)
        throw Error(ExitCode::WrongUse, "company " + escaped(companyNo) + " owns the " + shared.kind);
    const auto id = find(m_Database,
                         "SELECT " + shared.idColumn + " FROM " + shared.kind + " WHERE company_id = ? AND " +
                             shared.nameColumn + " = ?",
                         owner, name);
    if (!id)
        throw Error(ExitCode::Failed, "company " + escaped(ownerNo) + " has no " + shared.kind + " " +
                                          escaped(name) + "; list-" + shared.kind + "s lists them");
    run(m_Database,
        "INSERT INTO " + shared.kind + "_share(company_id, " + shared.kind +
            "_id) VALUES (?, ?) ON CONFLICT DO NOTHING",
        company, *id);
}

void Accounts::unshare(Shared what, const std::string& name, const std::string& ownerNo,
                       const std::string& companyNo)
{
    const Shareable shared = shareable(what);
    const std::string ofOwner = "SELECT " + shared.idColumn + " FROM " + shared.kind +
                                " WHERE company_id = ? AND " + shared.nameColumn + " = ?";
    if (run(m_Database,
            "DELETE FROM " + shared.kind + "_share WHERE company_id = ? AND " + shared.kind + "_id IN (" +
                ofOwner + ")",
            companyId(companyNo), companyId(ownerNo), name) == 0)
        throw Error(ExitCode::Failed, shared.kind + " " + escaped(name) + " of company " + escaped(ownerNo) +
                                          " is not shared with company " + escaped(companyNo) +
                                          "; list-shares lists what is");
}

std::uint32_t Accounts::userId(const std::string& user)
{
    if (const auto id = find(m_Database, "SELECT id FROM \"user\" WHERE username = ?", user))
        return *id;
    throw Error(ExitCode::Failed, "there is no user " + escaped(user) + "; list-users lists them");
}

std::uint32_t Accounts::companyId(const std::string& companyNo)
{
    if (const auto id = find(m_Database, "SELECT id FROM company WHERE companyno = ?", companyNo))
        return *id;
    throw Error(ExitCode::Failed, "there is no company " + escaped(companyNo) + "; add-company adds one");
}

} // namespace centre
