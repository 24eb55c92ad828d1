#include "centre/store/Connection.h"

#include "centre/base/Token.h"
#include "centre/store/Schema.h"

#include <sqlite3.h>

#include <exception>
#include <stdexcept>

namespace centre {

namespace {

constexpr char kUserOfToken[] = "SELECT username, company_id, may_write FROM user WHERE token_hash = ?";
constexpr char kBeginRead[] = "PRAGMA data_version"; // reads nothing but the state of the database

constexpr std::size_t kLargestMemory = 1000; // entries of one kind

/// Returns a number that changes with each commit, of whatever process; nothing before the connection has
/// read it and after the connection's own uncommitted change.
std::optional<unsigned int> dataVersion(sqlite3* database)
{
    unsigned int version = 0;
    if (::sqlite3_txn_state(database, "main") != SQLITE_TXN_READ ||
        ::sqlite3_file_control(database, "main", SQLITE_FCNTL_DATA_VERSION, &version) != SQLITE_OK)
        return std::nullopt;
    return version;
}

/// An SQL function of a folder's identifier: a text of its path, NULL if there is none.
template <class Text>
void answerFolderFunction(sqlite3_context* context, sqlite3_value* folderId, Text text)
{
    try {
        auto& connection = *static_cast<Connection*>(::sqlite3_user_data(context));
        const auto id = static_cast<std::uint32_t>(::sqlite3_value_int64(folderId));
        const FolderPath* folder = connection.folderPath(id);
        if (const std::string* answer = folder == nullptr ? nullptr : text(*folder))
            ::sqlite3_result_text(context, answer->data(), static_cast<int>(answer->size()),
                                  SQLITE_TRANSIENT);
    } catch (const std::exception& exception) {
        ::sqlite3_result_error(context, exception.what(), -1);
    }
}

void answerFolderPath(sqlite3_context* context, int, sqlite3_value** arguments)
{
    answerFolderFunction(context, arguments[0], [](const FolderPath& folder) { return &folder.path; });
}

void answerFolderBox(sqlite3_context* context, int, sqlite3_value** arguments)
{
    answerFolderFunction(context, arguments[0],
                         [](const FolderPath& folder) { return folder.box ? &*folder.box : nullptr; });
}

} // namespace

Connection::Connection(const std::string& dataFolder) : m_Database(openDatabase(dataFolder))
{
    m_Database->createFunction("folder_path", 1, false, this, answerFolderPath);
    m_Database->createFunction("folder_box", 1, false, this, answerFolderBox);
}

Query& Connection::query(const Operation& operation, const google::protobuf::MethodDescriptor& method)
{
    std::unique_ptr<Query>& query = m_Queries[&operation];
    if (!query)
        query = std::make_unique<Query>(*m_Database, operation, method);
    return *query;
}

SQLite::Statement& Connection::statement(const char* sql)
{
    const auto known = m_Statements.find(sql);
    return known != m_Statements.end()
               ? known->second
               : m_Statements.emplace(sql, SQLite::Statement(*m_Database, sql)).first->second;
}

StorageTree& Connection::storageTree()
{
    return m_Tree ? *m_Tree : m_Tree.emplace(*m_Database);
}

std::optional<User> Connection::user(const std::string& token)
{
    Memory& known = memory();
    if (const auto found = known.users.find(token); found != known.users.end())
        return found->second;
    const std::string hash = tokenHash(token);
    SQLite::Statement& row = statement(kUserOfToken);
    const ResetAtEnd resetAtEnd(row);
    row.bind(1, hash.data(), static_cast<int>(hash.size()));
    if (!row.executeStep())
        return std::nullopt;
    User user{row.getColumn(0).getString(), row.getColumn(1).getUInt(), row.getColumn(2).getInt() != 0};
    return known.users.emplace(token, std::move(user)).first->second;
}

User Connection::requireUser(const std::string& token)
{
    if (std::optional<User> known = user(token))
        return *known;
    throw std::runtime_error(kUnknownToken);
}

const FolderPath* Connection::folderPath(std::uint32_t folderId)
{
    static const std::string query = fullPath("SELECT ?, ''");
    auto& known = memory().folderPaths;
    if (const auto found = known.find(folderId); found != known.end())
        return &found->second;
    SQLite::Statement& folder = statement(query.c_str());
    const ResetAtEnd resetAtEnd(folder);
    folder.bind(1, folderId);
    if (!folder.executeStep())
        return nullptr;
    FolderPath path{folder.getColumn(0).getString(), std::nullopt};
    if (const SQLite::Column box = folder.getColumn(1); !box.isNull())
        path.box = box.getString();
    return &known.emplace(folderId, std::move(path)).first->second;
}

Connection::Memory& Connection::memory()
{
    const std::optional<unsigned int> version = dataVersion(m_Database->getHandle());
    if (!version || version != m_MemoryVersion || m_Memory.users.size() > kLargestMemory ||
        m_Memory.servedRoots.size() > kLargestMemory || m_Memory.folderPaths.size() > kLargestMemory)
        m_Memory = Memory();
    m_MemoryVersion = version;
    return m_Memory;
}

Read::Read(Connection& connection) : m_Statement(connection.statement(kBeginRead)), m_ResetAtEnd(m_Statement)
{
    m_Statement.executeStep();
}

} // namespace centre
