#ifndef LUMO_CENTRE_STORE_ACCOUNTS_H
#define LUMO_CENTRE_STORE_ACCOUNTS_H

#include "centre/store/Role.h"

#include <cstdint>
#include <optional>
#include <string>

namespace centre {

class Database;

/// The name that a user gives a token, and the last second in which it is valid, since 1970 in UTC.
struct TokenTerms
{
    std::string name = "first";
    std::optional<std::int64_t> until; ///< empty: for good
};

/// Users, their tokens, and what companies share. Works inside the caller's transactions, of which each
/// function that changes something needs one. What is committed counts in every process within a second. All
/// functions throw Error. Names are UTF-8.
class Accounts
{
public:
    explicit Accounts(Database& database) : m_Database(database) {}

    /// Adds a user with a token, which is returned and can't be had again: only its hash is kept.
    std::string addUser(const std::string& user, const std::string& companyNo, Role role,
                        const TokenTerms& terms = {});
    void setRole(const std::string& user, Role role);
    /// Removes a user and the user's tokens. What the user has made stays the company's.
    void removeUser(const std::string& user);

    /// Adds a token, which is returned and can't be had again. A name that was revoked is free again.
    std::string addToken(const std::string& user, const TokenTerms& terms);
    /// Changes the end of a token that was not revoked.
    void renewToken(const std::string& user, const TokenTerms& terms);
    /// Revokes a token and returns a new one of that name.
    std::string replaceToken(const std::string& user, const TokenTerms& terms);
    void revokeToken(const std::string& user, const std::string& name);

    /// What a company may share with others, to be read.
    enum class Shared
    {
        Disk,
        Project
    };
    /// Lets `companyNo` read a disk or project of company `ownerNo`. Doing so twice is as good as once.
    void share(Shared what, const std::string& name, const std::string& ownerNo,
               const std::string& companyNo);
    /// Throws if it is not shared with that company.
    void unshare(Shared what, const std::string& name, const std::string& ownerNo,
                 const std::string& companyNo);

private:
    std::uint32_t userId(const std::string& user);
    std::uint32_t companyId(const std::string& companyNo);

    Database& m_Database;
};

} // namespace centre

#endif
