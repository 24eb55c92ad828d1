#include "centre/program/Commands.h"

#include "centre/base/Token.h"
#include "centre/store/Store.h"

#include <iostream>

namespace centre {

CLI::App* command(CLI::App& app, Arguments& arguments, ExitCode& result, const std::string& name,
                  const std::string& description, ExitCode (*run)(const Arguments&))
{
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("DATA", arguments.data, "the centre's data folder")->required();
    command->callback([&arguments, &result, run] { result = run(arguments); });
    return command;
}

namespace {

/// Gives a new user's token to whom it concerns. A token that can't be written to its file is shown, since
/// it can't be had again.
ExitCode handOver(const Arguments& arguments, const std::string& token)
{
    if (!arguments.tokenFile.empty()) {
        try {
            writeTokenFile(arguments.tokenFile, token);
            std::cout << "token of user " << arguments.userName << " written to " << arguments.tokenFile
                      << "\n";
            return ExitCode::Success;
        } catch (const Error& error) {
            std::cerr << "lumo-centre: " << error.what() << "; it is shown instead\n";
        }
    }
    const std::string shown = "token of user " + arguments.userName + ", shown only now: " + token + "\n";
    if (!(std::cout << shown << std::flush))
        std::cerr << shown;
    return arguments.tokenFile.empty() ? ExitCode::Success : ExitCode::Failed;
}

ExitCode init(const Arguments& arguments)
{
    const std::string token = Store::create(arguments.data, arguments.companyNo, arguments.userName);
    std::cout << "made " << arguments.data << " with company " << arguments.companyNo << "\n";
    return handOver(arguments, token);
}

ExitCode addUser(const Arguments& arguments)
{
    return handOver(
        arguments,
        Store(arguments.data).addUser(arguments.userName, arguments.companyNo, !arguments.readOnly));
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

void addTokenFile(CLI::App* command, Arguments& arguments)
{
    command->add_option("--token-file", arguments.tokenFile,
                        "write the user's token there instead of showing it");
}

} // namespace

void addAdministration(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "init", "make a data folder with a company and a user", init);
    each->add_option("--company", arguments.companyNo, "the company's number")->capture_default_str();
    each->add_option("--user", arguments.userName, "the user's name")->capture_default_str();
    addTokenFile(each, arguments);

    each = command(app, arguments, result, "add-company", "add a company", addCompany);
    each->add_option("NO", arguments.companyNo, "its number")->required();

    each = command(app, arguments, result, "add-user", "add a user of a company", addUser);
    each->add_option("NAME", arguments.userName, "the user's name")->required();
    each->add_option("--company", arguments.companyNo, "the company's number")->required();
    each->add_flag("--read-only", arguments.readOnly, "the user may download, not upload");
    addTokenFile(each, arguments);

    each = command(app, arguments, result, "add-box", "add a storage box", addBox);
    each->add_option("CODE", arguments.boxCode, "its code")->required();
    each->add_option("ADDRESS", arguments.boxAddress, "its address, HOST:PORT")->required();

    each = command(app, arguments, result, "add-area", "add a national area", addArea);
    each->add_option("ID", arguments.areaId, "its identifier")->required();
    each->add_option("NAME", arguments.areaName, "its name")->required();
    each->add_option("--parent", arguments.areaParent, "identifier of the area that it is part of");
}

} // namespace centre
