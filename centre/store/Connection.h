#ifndef LUMO_CENTRE_STORE_CONNECTION_H
#define LUMO_CENTRE_STORE_CONNECTION_H

#include "centre/database/Database.h"
#include "centre/database/Sql.h"
#include "centre/database/Statement.h"
#include "centre/store/Query.h"
#include "centre/store/Role.h"
#include "centre/store/ServedRoot.h"
#include "centre/store/StorageTree.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace centre {

// The reasons for refusing a token.
constexpr char kUnknownToken[] = "the token is not that of a user of this centre";
constexpr char kRevokedToken[] = "the token was revoked";
constexpr char kExpiredToken[] = "the token has expired";

struct User
{
    std::string name;
    std::uint32_t companyId;
    Role role;
    std::uint32_t tokenId;   ///< of the token that the user came with
    std::string companyName; ///< the company's number, a text such as "LUMO"

    bool mayWrite() const { return role != Role::Reader; }
};

/// A folder of a disk: its path on the storage box, and the code of the box, if the disk has one.
struct FolderPath
{
    std::string path;
    std::optional<std::string> box;
};

/// A connection to the database, with the statements that are prepared on it and a memory of what was looked
/// up. SQL on it has the functions folder_path(ID), the path of a folder on its storage box, and
/// folder_box(ID), the box's code. For one thread at a time. Its functions throw DatabaseError.
class Connection
{
public:
    explicit Connection(const std::string& place);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Returns the operation prepared on this connection, which keeps it for the next call.
    Query& query(const Operation& operation, const google::protobuf::MethodDescriptor& method);
    /// Returns the statement prepared on this connection, which keeps it for the next call. `sql` must
    /// outlive the connection.
    Statement& statement(const Sql& sql);
    StorageTree& storageTree();
    Database& database() { return *m_Database; }

    /// Returns the user of a token, or nothing and the reason for refusing it. A change that any process has
    /// committed counts at once.
    std::optional<User> user(const std::string& token, std::string& reason);
    /// The same by the token's identifier.
    std::optional<User> userOfToken(std::uint32_t tokenId, std::string& reason);
    /// The same as `user`; throws std::runtime_error with the reason.
    User requireUser(const std::string& token);

    /// Returns the path of a folder, valid until the next look-up; null if there is no such folder.
    const FolderPath* folderPath(std::uint32_t folderId);

    /// What was looked up before.
    struct KnownUser
    {
        User user;
        std::optional<std::int64_t> until; ///< the last second of the token
    };
    struct Memory
    {
        std::unordered_map<std::string, KnownUser> users; ///< by token
        std::unordered_map<std::string, std::optional<ServedRoot>>
            servedRoots; ///< by a key of findServedRoot
        std::unordered_map<std::uint32_t, FolderPath> folderPaths;
    };
    /// Returns the memory, to be read and added to. It is empty after each change of the database, of
    /// whatever process, and whenever no read is under way, or a transaction.
    Memory& memory();

private:
    std::optional<KnownUser> findUser(Statement& row, std::string& reason);

    std::unique_ptr<Database> m_Database;
    std::optional<StorageTree> m_Tree;
    std::unordered_map<const Sql*, std::unique_ptr<Statement>> m_Statements;
    std::unordered_map<const Operation*, std::unique_ptr<Query>> m_Queries;
    std::optional<std::uint64_t> m_MemoryState; ///< the database's state that the memory is of
    Memory m_Memory;
};

/// A read: what statements on a connection look up while it lives is remembered. With SQLite they see one
/// state of the database. One at a time on a connection, outside transactions of its own.
class Read
{
public:
    explicit Read(Connection& connection) : m_Database(connection.database()) { m_Database.holdState(); }
    ~Read() { m_Database.releaseState(); }

    Read(const Read&) = delete;
    Read& operator=(const Read&) = delete;

private:
    Database& m_Database;
};

} // namespace centre

#endif
