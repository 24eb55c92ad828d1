#include "centre/store/Ownership.h"

#include "centre/base/Error.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/ResetAtEnd.h"

namespace centre {

namespace {

struct Owned
{
    std::string name;
    std::string company; ///< SQL that selects the company of the record `:id`
};

std::vector<Owned> ownedKinds()
{
    const std::string select = "SELECT company_id FROM ";
    std::vector<Owned> kinds = {
        {"disk", select + "disk WHERE id = :id"},
        {"folder", select + "folder JOIN disk ON disk.id = disk_id WHERE folder.id = :id"},
        {"file", select + "file JOIN folder ON folder.id = file.parent_id JOIN disk ON disk.id = disk_id"
                          " WHERE file.id = :id"},
    };
    for (const RecordKind& kind : recordKinds()) {
        std::string from = kind.name;
        if (kind.name == "point")
            from += " JOIN control USING (dq_con_id)";
        if (kind.hasType() || kind.name == "point")
            from += " JOIN type USING (type_id)";
        if (kind.name != "project")
            from += " JOIN project USING (project_id)";
        kinds.resize(static_cast<std::size_t>(kind.number) + 1);
        kinds.back() = {kind.name, select + from + " WHERE " + kind.idColumn() + " = :id"};
    }
    return kinds;
}

} // namespace

void requireOwn(Connection& connection, const User& user, int kind, std::uint32_t id)
{
    static const std::vector<Owned> kinds = ownedKinds();
    if (kind < 0 || static_cast<std::size_t>(kind) >= kinds.size())
        throw Error(ExitCode::Failed, "there are no records of data type " + std::to_string(kind));
    const Owned& owned = kinds[static_cast<std::size_t>(kind)];
    SQLite::Statement& company = connection.statement(owned.company.c_str());
    const ResetAtEnd resetAtEnd(company);
    company.bind(1, id);
    if (!company.executeStep())
        throw Error(ExitCode::Failed, "there is no " + owned.name + " " + std::to_string(id));
    if (company.getColumn(0).getUInt() != user.companyId)
        throw Error(ExitCode::Failed,
                    owned.name + " " + std::to_string(id) + " is not of the company of user " + user.name);
}

void requireWriter(const User& user)
{
    if (!user.mayWrite)
        throw Error(ExitCode::Failed, "user " + user.name + " may only read");
}

} // namespace centre
