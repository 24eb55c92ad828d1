#include "centre/store/Ownership.h"

#include "centre/base/Error.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/ResetAtEnd.h"

#include <map>
#include <string>

namespace centre {

namespace {

struct Owned
{
    std::string name;
    std::string company; ///< SQL that selects the company of the record `:id`
};

std::map<int, Owned> ownedKinds()
{
    const std::string select = "SELECT company_id FROM ";
    std::map<int, Owned> kinds = {
        {DATA_TYPE_DISK, {"disk", select + "disk WHERE id = :id"}},
        {DATA_TYPE_FOLDER,
         {"folder", select + "folder JOIN disk ON disk.id = disk_id WHERE folder.id = :id"}},
        {DATA_TYPE_FILE,
         {"file", select + "file JOIN folder ON folder.id = file.parent_id JOIN disk ON disk.id = disk_id"
                           " WHERE file.id = :id"}},
    };
    for (const RecordKind& kind : recordKinds()) {
        std::string from = kind.name;
        const Column* owner = &kind.owner();
        for (; owner->references != "company"; owner = &findKind(owner->references)->owner())
            from += " JOIN " + owner->references + " USING (" + owner->name + ")";
        kinds[kind.number] = {kind.name, select + from + " WHERE " + kind.idColumn() + " = :id"};
    }
    return kinds;
}

} // namespace

void requireOwn(Connection& connection, const User& user, int type, std::uint32_t id)
{
    static const std::map<int, Owned> kinds = ownedKinds();
    const auto kind = kinds.find(type);
    if (kind == kinds.end())
        throw refusal("there are no records of data type " + std::to_string(type));
    const Owned& owned = kind->second;
    SQLite::Statement& company = connection.statement(owned.company.c_str());
    const ResetAtEnd resetAtEnd(company);
    company.bind(1, id);
    if (!company.executeStep())
        throw refusal("there is no " + owned.name + " " + std::to_string(id));
    if (company.getColumn(0).getUInt() != user.companyId)
        throw refusal(owned.name + " " + std::to_string(id) + " does not belong to the company of user " +
                      user.name);
}

void requireWriter(const User& user)
{
    if (!user.mayWrite)
        throw refusal("user " + user.name + " may only read");
}

} // namespace centre
