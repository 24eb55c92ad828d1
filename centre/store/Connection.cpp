#include "centre/store/Connection.h"

#include "centre/base/Token.h"
#include "centre/store/Schema.h"

#include <ctime>
#include <stdexcept>

namespace centre {

namespace {

const std::string kUser = "SELECT username, company_id, role, until, revoked, token.id, companyno"
                          " FROM token JOIN \"user\" ON \"user\".id = user_id"
                          " JOIN company ON company.id = company_id WHERE ";
const Sql kUserOfToken(kUser + "token_hash = ?");
const Sql kUserOfTokenId(kUser + "token.id = ?");
const Sql kFolderPath(fullPath("SELECT id, substr(name, 1, 0) FROM folder WHERE id = ?"));
constexpr std::size_t kLargestMemory = 1000; // entries of one kind

bool isValid(const Connection::KnownUser& user, std::string& reason)
{
    const bool hasEnded = user.until && *user.until < std::time(nullptr);
    if (hasEnded)
        reason = kExpiredToken;
    return !hasEnded;
}

} // namespace

Connection::Connection(const std::string& place) : m_Database(openAnother(place))
{
    m_Database->define("folder_path", [this](std::uint32_t id) {
        const FolderPath* folder = folderPath(id);
        return folder ? &folder->path : nullptr;
    });
    m_Database->define("folder_box", [this](std::uint32_t id) {
        const FolderPath* folder = folderPath(id);
        return folder && folder->box ? &*folder->box : nullptr;
    });
}

Query& Connection::query(const Operation& operation, const google::protobuf::MethodDescriptor& method)
{
    std::unique_ptr<Query>& query = m_Queries[&operation];
    if (!query)
        query = std::make_unique<Query>(*m_Database, operation, method);
    return *query;
}

Statement& Connection::statement(const Sql& sql)
{
    std::unique_ptr<Statement>& statement = m_Statements[&sql];
    if (!statement)
        statement = m_Database->prepare(sql);
    return *statement;
}

StorageTree& Connection::storageTree()
{
    return m_Tree ? *m_Tree : m_Tree.emplace(*m_Database);
}

std::optional<User> Connection::user(const std::string& token, std::string& reason)
{
    Memory& known = memory();
    auto found = known.users.find(token);
    if (found == known.users.end()) {
        const std::string hash = tokenHash(token);
        Statement& row = statement(kUserOfToken);
        const ResetAtEnd resetAtEnd(row);
        row.bindBytes(1, hash);
        std::optional<KnownUser> user = findUser(row, reason);
        if (!user)
            return std::nullopt;
        found = known.users.emplace(token, std::move(*user)).first;
    }
    return isValid(found->second, reason) ? std::optional(found->second.user) : std::nullopt;
}

std::optional<User> Connection::userOfToken(std::uint32_t tokenId, std::string& reason)
{
    Statement& row = statement(kUserOfTokenId);
    const ResetAtEnd resetAtEnd(row);
    row.bind(1, tokenId);
    const std::optional<KnownUser> found = findUser(row, reason);
    return found && isValid(*found, reason) ? std::optional(found->user) : std::nullopt;
}

std::optional<Connection::KnownUser> Connection::findUser(Statement& row, std::string& reason)
{
    const bool exists = row.step();
    if (!exists || row.integer(4)) {
        reason = exists ? kRevokedToken : kUnknownToken;
        return std::nullopt;
    }
    return KnownUser{{row.string(0), row.id(1), roleNamed(row.string(2)).value(), row.id(5), row.string(6)},
                     row.integer(3)};
}

User Connection::requireUser(const std::string& token)
{
    std::string reason;
    if (std::optional<User> known = user(token, reason))
        return *known;
    throw std::runtime_error(reason);
}

const FolderPath* Connection::folderPath(std::uint32_t folderId)
{
    auto& known = memory().folderPaths;
    if (const auto found = known.find(folderId); found != known.end())
        return &found->second;
    Statement& folder = statement(kFolderPath);
    const ResetAtEnd resetAtEnd(folder);
    folder.bind(1, folderId);
    if (!folder.step())
        return nullptr;
    FolderPath path{folder.string(0), std::nullopt};
    if (const auto box = folder.text(1))
        path.box = *box;
    return &known.emplace(folderId, std::move(path)).first->second;
}

Connection::Memory& Connection::memory()
{
    const std::optional<std::uint64_t> state = m_Database->state();
    if (!state || state != m_MemoryState || m_Memory.users.size() > kLargestMemory ||
        m_Memory.servedRoots.size() > kLargestMemory || m_Memory.folderPaths.size() > kLargestMemory)
        m_Memory = Memory();
    m_MemoryState = state;
    return m_Memory;
}

} // namespace centre
