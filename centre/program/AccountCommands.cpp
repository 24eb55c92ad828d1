#include "centre/base/Date.h"
#include "centre/base/Text.h"
#include "centre/database/Database.h"
#include "centre/program/Commands.h"
#include "centre/store/Accounts.h"
#include "centre/store/Store.h"
#include "lumo/components/platform/DisplayWidth.h"

#include <nlohmann/json.hpp>

#include <QDateTime>

#include <algorithm>
#include <ctime>
#include <functional>
#include <initializer_list>
#include <iostream>

namespace centre {

namespace {

/// Runs changes of accounts in one transaction and returns what they return.
template <class Work>
auto changed(const Arguments& arguments, Work work)
{
    Store store(arguments.data);
    Transaction transaction(store.database());
    Accounts accounts(store.database());
    auto outcome = work(accounts);
    transaction.commit();
    return outcome;
}

/// Runs a change that returns nothing.
template <class Work>
ExitCode change(const Arguments& arguments, Work work)
{
    return changed(arguments, [&](Accounts& accounts) {
        work(accounts);
        return ExitCode::Success;
    });
}

TokenTerms termsOf(const Arguments& arguments)
{
    TokenTerms terms;
    terms.name = arguments.tokenName;
    if (arguments.until.empty())
        return terms;
    const auto day = isoDate(arguments.until);
    if (!day)
        throw Error(ExitCode::WrongUse, "--until must be a day, YYYY-MM-DD, not " + escaped(arguments.until));
    const QDate date = QDate::fromString(QString::fromStdString(*day), Qt::ISODate);
    terms.until = QDateTime(date.addDays(1), QTime(0, 0), Qt::UTC).toSecsSinceEpoch() - 1;
    return terms;
}

Role roleOf(const Arguments& arguments)
{
    if (arguments.readOnly)
        return Role::Reader;
    if (const auto role = roleNamed(arguments.role))
        return *role;
    throw Error(ExitCode::WrongUse,
                "a role is reader, writer or administrator, not " + escaped(arguments.role));
}

ExitCode addUser(const Arguments& arguments)
{
    return handOver(arguments, changed(arguments, [&](Accounts& accounts) {
                        return accounts.addUser(arguments.userName, arguments.companyNo, roleOf(arguments),
                                                termsOf(arguments));
                    }));
}

ExitCode setRole(const Arguments& arguments)
{
    return change(arguments,
                  [&](Accounts& accounts) { accounts.setRole(arguments.userName, roleOf(arguments)); });
}

ExitCode removeUser(const Arguments& arguments)
{
    return change(arguments, [&](Accounts& accounts) { accounts.removeUser(arguments.userName); });
}

ExitCode addToken(const Arguments& arguments)
{
    return handOver(arguments, changed(arguments, [&](Accounts& accounts) {
                        return accounts.addToken(arguments.userName, termsOf(arguments));
                    }));
}

ExitCode renewToken(const Arguments& arguments)
{
    if (arguments.replaceToken)
        return handOver(arguments, changed(arguments, [&](Accounts& accounts) {
                            return accounts.replaceToken(arguments.userName, termsOf(arguments));
                        }));
    return change(arguments,
                  [&](Accounts& accounts) { accounts.renewToken(arguments.userName, termsOf(arguments)); });
}

ExitCode revokeToken(const Arguments& arguments)
{
    return change(arguments,
                  [&](Accounts& accounts) { accounts.revokeToken(arguments.userName, arguments.tokenName); });
}

template <Accounts::Shared what>
ExitCode share(const Arguments& arguments)
{
    return change(arguments, [&](Accounts& accounts) {
        accounts.share(what, arguments.sharedName, arguments.companyNo, arguments.otherCompanyNo);
    });
}

template <Accounts::Shared what>
ExitCode unshare(const Arguments& arguments)
{
    return change(arguments, [&](Accounts& accounts) {
        accounts.unshare(what, arguments.sharedName, arguments.companyNo, arguments.otherCompanyNo);
    });
}

std::string instant(std::int64_t seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate).toStdString();
}

using Rows = std::vector<std::vector<std::optional<std::string>>>;

void printJson(const std::vector<std::string>& columns, const Rows& rows)
{
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const auto& row : rows) {
        nlohmann::ordered_json& each = all.emplace_back(nlohmann::ordered_json::object());
        for (std::size_t i = 0; i < columns.size(); ++i)
            each[columns[i]] = row[i] ? nlohmann::ordered_json(*row[i]) : nlohmann::ordered_json();
    }
    std::cout << all.dump(1) << "\n";
}

void printTable(const std::vector<std::string>& columns, const Rows& rows)
{
    using platform::displayWidth;
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        widths.push_back(displayWidth(columns[i]));
        for (const auto& row : rows)
            widths[i] = std::max(widths[i], displayWidth(escaped(row[i].value_or("-"))));
    }
    const auto print = [&](const std::function<std::string(std::size_t)>& text) {
        for (std::size_t i = 0; i < columns.size(); ++i)
            std::cout << text(i)
                      << (i + 1 < columns.size() ? std::string(widths[i] - displayWidth(text(i)) + 2, ' ')
                                                 : "\n");
    };
    print([&](std::size_t i) { return columns[i]; });
    for (const auto& row : rows)
        print([&](std::size_t i) { return escaped(row[i].value_or("-")); });
}

/// Prints the rows of a query. Those of `times` are columns with seconds since 1970.
ExitCode list(const Arguments& arguments, const std::string& sql, const std::vector<std::string>& times = {})
{
    Store store(arguments.data);
    const auto query = store.database().prepare(sql);
    std::vector<std::string> columns(static_cast<std::size_t>(query->columnCount()));
    for (int i = 0; i < query->columnCount(); ++i)
        columns[static_cast<std::size_t>(i)] = query->columnName(i);
    Rows rows;
    while (query->step()) {
        auto& row = rows.emplace_back();
        for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
            const bool isTime = std::find(times.begin(), times.end(), columns[i]) != times.end();
            const auto time = isTime ? query->integer(i) : std::nullopt;
            const auto text = isTime ? std::nullopt : query->text(i);
            row.push_back(time   ? std::optional(instant(*time))
                          : text ? std::optional(std::string(*text))
                                 : std::nullopt);
        }
    }
    (arguments.json ? printJson : printTable)(columns, rows);
    return ExitCode::Success;
}

ExitCode listCompanies(const Arguments& arguments)
{
    return list(arguments, "SELECT companyno AS company FROM company ORDER BY companyno");
}

ExitCode listUsers(const Arguments& arguments)
{
    return list(arguments, "SELECT username AS name, companyno AS company, role FROM \"user\""
                           " JOIN company ON company.id = company_id ORDER BY companyno, username");
}

ExitCode listBoxes(const Arguments& arguments)
{
    return list(arguments, "SELECT code AS box, address FROM box ORDER BY code");
}

ExitCode listDisks(const Arguments& arguments)
{
    return list(arguments, "SELECT name AS disk, companyno AS company, kesta_code AS box, root_path AS root"
                           " FROM disk JOIN company ON company.id = company_id ORDER BY companyno, name");
}

ExitCode listProjects(const Arguments& arguments)
{
    return list(arguments, "SELECT project_name AS project, companyno AS company FROM project"
                           " JOIN company ON company.id = company_id ORDER BY companyno, project_name");
}

ExitCode listTokens(const Arguments& arguments)
{
    const std::string now = std::to_string(std::time(nullptr));
    return list(
        arguments,
        "SELECT username AS owner, name AS token, created, until, CASE WHEN revoked IS NOT NULL"
        " THEN 'revoked' WHEN until < " +
            now +
            " THEN 'expired' ELSE 'valid' END AS state FROM token JOIN \"user\" ON \"user\".id = user_id"
            " ORDER BY username, token.id",
        {"created", "until"});
}

ExitCode listShares(const Arguments& arguments)
{
    return list(
        arguments,
        "SELECT 'disk' AS kind, disk.name AS name, owner.companyno AS company, other.companyno AS reader"
        " FROM disk_share JOIN disk ON disk.id = disk_id JOIN company AS owner ON owner.id ="
        " disk.company_id JOIN company AS other ON other.id = disk_share.company_id"
        " UNION ALL SELECT 'project', project_name, owner.companyno, other.companyno FROM project_share"
        " JOIN project ON project.project_id = project_share.project_id JOIN company AS owner ON"
        " owner.id = project.company_id JOIN company AS other ON other.id = project_share.company_id"
        " ORDER BY 1, 3, 2, 4");
}

void addUserName(CLI::App* command, Arguments& arguments)
{
    command->add_option("USER", arguments.userName, "The user's name")->type_name("")->required();
}

void addTokenName(CLI::App* command, Arguments& arguments)
{
    command->add_option("NAME", arguments.tokenName, "The token's name")->type_name("")->required();
}

void addUntil(CLI::App* command, Arguments& arguments)
{
    command
        ->add_option("--until", arguments.until,
                     "The last day that the token is valid, in UTC; without it, it is valid for good")
        ->type_name("YYYY-MM-DD");
}

struct NamedCommand
{
    const char* name;
    const char* description;
    ExitCode (*run)(const Arguments&);
};

void addSharing(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    using Shared = Accounts::Shared;
    for (const auto& [name, description, run] : std::initializer_list<NamedCommand>{
             NamedCommand{"share-disk", "Let another company read a disk", share<Shared::Disk>},
             NamedCommand{"unshare-disk", "End the sharing of a disk", unshare<Shared::Disk>},
             NamedCommand{"share-project", "Let another company read a project", share<Shared::Project>},
             NamedCommand{"unshare-project", "End the sharing of a project", unshare<Shared::Project>}}) {
        CLI::App* each = command(app, arguments, result, name, description, run);
        each->add_option("NAME", arguments.sharedName, "The name of the disk or project")
            ->type_name("")
            ->required();
        each->add_option("--company", arguments.companyNo, "The number of the company that owns it")
            ->type_name("NO")
            ->capture_default_str();
        each->add_option("--with", arguments.otherCompanyNo, "The number of the company that may read it")
            ->type_name("NO")
            ->required();
    }
}

void addLists(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    for (const auto& [name, description, run] : std::initializer_list<NamedCommand>{
             NamedCommand{"list-companies", "List companies", listCompanies},
             NamedCommand{"list-users", "List users", listUsers},
             NamedCommand{"list-boxes", "List storage boxes", listBoxes},
             NamedCommand{"list-disks", "List disks", listDisks},
             NamedCommand{"list-projects", "List data projects", listProjects},
             NamedCommand{"list-tokens", "List the names of tokens; the tokens themselves are not kept",
                          listTokens},
             NamedCommand{"list-shares", "List the disks and projects that other companies may read",
                          listShares}})
        command(app, arguments, result, name, description, run)
            ->add_flag("--json", arguments.json, "Print JSON instead of a table");
}

} // namespace

void addAccounts(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each = command(app, arguments, result, "add-user", "Add a user of a company", addUser);
    each->add_option("NAME", arguments.userName, "The user's name")->type_name("")->required();
    each->add_option("--company", arguments.companyNo, "The company's number")->type_name("NO")->required();
    CLI::Option* role = each->add_option("--role", arguments.role, "reader, writer or administrator");
    role->type_name("ROLE")->capture_default_str();
    each->add_flag("--read-only", arguments.readOnly, "The same as --role reader")->excludes(role);
    addUntil(each, arguments);
    addTokenFile(each, arguments);

    each = command(app, arguments, result, "set-role", "Change a user's role", setRole);
    addUserName(each, arguments);
    each->add_option("ROLE", arguments.role, "reader, writer or administrator")->type_name("")->required();

    each = command(app, arguments, result, "remove-user",
                   "Remove a user and the user's tokens; what the user made stays", removeUser);
    addUserName(each, arguments);

    each = command(app, arguments, result, "add-token", "Add a token of a user", addToken);
    addUserName(each, arguments);
    addTokenName(each, arguments);
    addUntil(each, arguments);
    addTokenFile(each, arguments);

    each = command(app, arguments, result, "renew-token", "Change the last day of a token", renewToken);
    addUserName(each, arguments);
    addTokenName(each, arguments);
    addUntil(each, arguments);
    CLI::Option* replace =
        each->add_flag("--replace", arguments.replaceToken, "Make a new token in its place and revoke it");
    addTokenFile(each, arguments)->needs(replace);

    each = command(app, arguments, result, "revoke-token", "End a token within a second", revokeToken);
    addUserName(each, arguments);
    addTokenName(each, arguments);

    addSharing(app, arguments, result);
    addLists(app, arguments, result);
}

} // namespace centre
