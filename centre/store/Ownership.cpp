#include "centre/store/Ownership.h"

#include "centre/base/Error.h"
#include "centre/database/Statement.h"
#include "centre/store/RecordKinds.h"

#include <map>
#include <string>

namespace centre {

namespace {

/// The way from a record to the disk or project that it is part of.
struct Chain
{
    std::string from;    ///< the tables, joined
    std::string id;      ///< the record's identifier
    std::string company; ///< the company that owns the disk or project
    std::string shared;  ///< the condition that it is shared with `:caller_company`
};

/// A table with the column that refers to the table above it.
struct Step
{
    std::string idColumn;
    std::string above; ///< "company" ends the way
    std::string toAbove;
};

Step stepFrom(const std::string& table)
{
    if (table == "disk")
        return {"id", "company", "company_id"};
    if (table == "folder")
        return {"id", "disk", "disk_id"};
    if (table == "file")
        return {"id", "folder", "parent_id"};
    const RecordKind& kind = *findKind(table);
    return {kind.idColumn(), kind.owner().references, kind.owner().name};
}

Chain chainFrom(const std::string& table)
{
    Step step = stepFrom(table);
    std::string alias = "owned_" + table; // differs from the names of the query that the chain is part of
    Chain chain{table + " AS " + alias, alias + "." + step.idColumn, "", ""};
    std::string top = table;
    while (step.above != "company") {
        const std::string below = alias + "." + step.toAbove;
        top = step.above;
        alias = "owned_" + top;
        chain.from.append(" JOIN ").append(top).append(" AS ").append(alias);
        step = stepFrom(top);
        chain.from.append(" ON ").append(alias).append(".").append(step.idColumn).append(" = ").append(below);
    }
    chain.company = alias + "." + step.toAbove;
    chain.shared = "EXISTS (SELECT 1 FROM " + top +
                   "_share AS shared WHERE shared.company_id = :caller_company" + " AND shared." + top +
                   "_id = " + alias + "." + step.idColumn + ")";
    return chain;
}

std::string companyOf(const Chain& chain)
{
    return "SELECT " + chain.company + " FROM " + chain.from + " WHERE " + chain.id + " = :id";
}

struct Owned
{
    explicit Owned(const std::string& table)
        : name(table),
          company(companyOf(chainFrom(table))),
          readable("SELECT 1 WHERE " + centre::readable(table, ":id"))
    {
    }

    const std::string name;
    const Sql company;  ///< selects the company of the record `:id`
    const Sql readable; ///< selects a row if `:caller_company` may read the record `:id`
};

std::map<int, Owned> ownedKinds()
{
    std::map<int, Owned> kinds;
    kinds.try_emplace(DATA_TYPE_DISK, "disk");
    kinds.try_emplace(DATA_TYPE_FOLDER, "folder");
    kinds.try_emplace(DATA_TYPE_FILE, "file");
    for (const RecordKind& kind : recordKinds())
        kinds.try_emplace(kind.number, kind.name);
    return kinds;
}

const Owned& ownedKind(int type)
{
    static const std::map<int, Owned> kinds = ownedKinds();
    const auto kind = kinds.find(type);
    if (kind == kinds.end())
        throw refusal("there are no records of data type " + std::to_string(type));
    return kind->second;
}

} // namespace

std::string readable(const std::string& table, const std::string& id)
{
    const Chain chain = chainFrom(table);
    return "EXISTS (SELECT 1 FROM " + chain.from + " WHERE " + chain.id + " = " + id + " AND (" +
           chain.company + " = :caller_company OR " + chain.shared + ")) ";
}

std::string readableRow(const std::string& table)
{
    const std::string id = stepFrom(table).idColumn;
    return table + "." + id + " IN (SELECT " + id + " FROM " + table +
           " WHERE company_id = :caller_company UNION ALL SELECT " + table + "_id FROM " + table +
           "_share WHERE company_id = :caller_company) ";
}

std::string readableOfCompany(const std::string& table)
{
    return ":company_id IN (:caller_company, " + table + ".company_id) AND " + readableRow(table);
}

std::string readableCompany()
{
    return "(company.id = :caller_company OR company.id IN (SELECT disk.company_id FROM disk WHERE " +
           readableRow("disk") + "UNION ALL SELECT project.company_id FROM project WHERE " +
           readableRow("project") + ")) ";
}

std::string readableImageComment()
{
    return "(image_comment.company_id IS NULL OR image_comment.company_id = :caller_company) ";
}

bool mayRead(Connection& connection, const User& user, int type, std::uint32_t id)
{
    Statement& record = connection.statement(ownedKind(type).readable);
    const ResetAtEnd resetAtEnd(record);
    record.bindAll(id, user.companyId);
    return record.step();
}

void requireReadable(Connection& connection, const User& user, int type, std::uint32_t id)
{
    if (!mayRead(connection, user, type, id))
        throw refusal("there is no " + ownedKind(type).name + " " + std::to_string(id));
}

bool isOwn(Connection& connection, const User& user, int type, std::uint32_t id)
{
    Statement& company = connection.statement(ownedKind(type).company);
    const ResetAtEnd resetAtEnd(company);
    company.bind(1, id);
    return company.step() && company.id(0) == user.companyId;
}

void requireOwn(Connection& connection, const User& user, int type, std::uint32_t id)
{
    if (isOwn(connection, user, type, id))
        return;
    requireReadable(connection, user, type, id);
    throw refusal(ownedKind(type).name + " " + std::to_string(id) +
                  " is shared by another company and can only be read");
}

void requireWriter(const User& user)
{
    if (!user.mayWrite())
        throw refusal("user " + user.name + " may only read");
}

} // namespace centre
