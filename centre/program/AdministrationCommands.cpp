#include "centre/program/Commands.h"

#include "centre/base/Token.h"
#include "centre/store/Schema.h"
#include "centre/store/Store.h"

#include <iostream>

namespace centre {

CLI::App* command(CLI::App& app, Arguments& arguments, ExitCode& result, const std::string& name,
                  const std::string& description, ExitCode (*run)(const Arguments&))
{
    CLI::App* command = app.add_subcommand(name, description)->group("Commands");
    command
        ->add_option("DATA", arguments.data,
                     "The centre's data folder; --database URL in its place is a database of PostgreSQL")
        ->type_name("")
        ->required();
    command->callback([&arguments, &result, run] { result = run(arguments); });
    return command;
}

ExitCode handOver(const Arguments& arguments, const std::string& token)
{
    if (!arguments.tokenFile.empty()) {
        try {
            writeTokenFile(arguments.tokenFile, token);
            std::cout << "wrote the token of user " << arguments.userName << " to " << arguments.tokenFile
                      << "\n";
            return ExitCode::Success;
        } catch (const Error& error) {
            std::cerr << "lumo-centre: " << error.what() << "; here it is instead\n";
        }
    }
    const std::string shown =
        "token of user " + arguments.userName + ", shown only this once: " + token + "\n";
    if (!(std::cout << shown << std::flush))
        std::cerr << shown;
    return arguments.tokenFile.empty() ? ExitCode::Success : ExitCode::Failed;
}

CLI::Option* addTokenFile(CLI::App* command, Arguments& arguments)
{
    return command
        ->add_option("--token-file", arguments.tokenFile,
                     "The file to write the user's token to, instead of showing it")
        ->type_name("FILE");
}

namespace {

ExitCode init(const Arguments& arguments)
{
    const std::string token = Store::create(arguments.data, arguments.companyNo, arguments.userName);
    std::cout << "made " << shownPlace(arguments.data) << " with company " << arguments.companyNo << "\n";
    return handOver(arguments, token);
}

ExitCode migrate(const Arguments& arguments)
{
    const int before = centre::migrate(arguments.data);
    std::cout << "the tables of " << shownPlace(arguments.data) << " have version " << schemaVersion();
    if (before < schemaVersion())
        std::cout << ", they had version " << before;
    std::cout << "\n";
    return ExitCode::Success;
}

ExitCode addCompany(const Arguments& arguments)
{
    Store(arguments.data).addCompany(arguments.companyNo);
    return ExitCode::Success;
}

ExitCode addBox(const Arguments& arguments)
{
    Store(arguments.data).addBox(arguments.boxCode, arguments.boxAddress);
    return ExitCode::Success;
}

ExitCode addArea(const Arguments& arguments)
{
    Store(arguments.data).addArea(arguments.areaId, arguments.areaName, arguments.areaParent);
    return ExitCode::Success;
}

} // namespace

void addAdministration(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "init", "Make a data folder with a company and a user", init);
    each->add_option("--company", arguments.companyNo, "The company's number")
        ->type_name("NO")
        ->capture_default_str();
    each->add_option("--user", arguments.userName, "The user's name")
        ->type_name("NAME")
        ->capture_default_str();
    addTokenFile(each, arguments);

    command(app, arguments, result, "migrate", "Bring the tables of an earlier version up to date", migrate);

    each = command(app, arguments, result, "add-company", "Add a company", addCompany);
    each->add_option("NO", arguments.companyNo, "The company's number")->type_name("")->required();

    each = command(app, arguments, result, "add-box", "Add a storage box and its address", addBox);
    each->add_option("CODE", arguments.boxCode, "The box's code")->type_name("")->required();
    each->add_option("ADDRESS", arguments.boxAddress, "The box's address, HOST:PORT")
        ->type_name("")
        ->required();

    each = command(app, arguments, result, "add-area", "Add a national area", addArea);
    each->add_option("ID", arguments.areaId, "The area's identifier, a number from 1 to 4294967294")
        ->type_name("")
        ->required();
    each->add_option("NAME", arguments.areaName, "The area's name")->type_name("")->required();
    each->add_option("--parent", arguments.areaParent, "The identifier of the area that it is part of")
        ->type_name("ID");
}

} // namespace centre
