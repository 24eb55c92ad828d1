#include "centre/program/ConfigFile.h"

#include "centre/base/Error.h"

#include <toml++/toml.h>

#include <memory>
#include <sstream>

namespace centre {

namespace {

[[noreturn]] void refuse(const std::string& file, const toml::source_region& place, const std::string& reason)
{
    throw Error(ExitCode::WrongUse, file + ":" + std::to_string(place.begin.line) + ": " + reason);
}

toml::table parse(std::istream& input, const std::string& file)
{
    try {
        return toml::parse(input);
    } catch (const toml::parse_error& error) {
        refuse(file, error.source(), "not TOML: " + std::string(error.description()));
    }
}

/// Returns the command of that name; null if there is none.
CLI::App* findCommand(CLI::App& app, const std::string& name)
{
    const auto found =
        app.get_subcommands([&name](CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

/// Returns the option or the argument that a key names; null if there is none.
CLI::Option* findOption(CLI::App& command, const std::string& key)
{
    if (key == "database") // see databaseAsData
        return command.get_option_no_throw("DATA");
    CLI::Option* option = command.get_option_no_throw("--" + key);
    if (option == nullptr && key == CLI::detail::to_lower(key)) {
        std::string argument = key;
        for (char& letter : argument)
            letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        option = command.get_option_no_throw(argument);
    }
    return option == nullptr || option->get_configurable() ? option : nullptr;
}

/// Returns a text, a number or a truth value as the command line has it; nothing for any other value.
std::string asArgument(const toml::node& value)
{
    if (const auto text = value.value_exact<std::string>())
        return *text;
    if (!value.is_integer() && !value.is_boolean())
        return {};
    std::ostringstream text;
    value.visit([&text](const auto& known) {
        if constexpr (toml::is_integer<decltype(known)> || toml::is_boolean<decltype(known)>)
            text << std::boolalpha << *known;
    });
    return text.str();
}

std::vector<std::string> asArguments(const toml::node& value)
{
    std::vector<std::string> texts;
    if (const toml::array* values = value.as_array())
        for (const toml::node& each : *values)
            texts.push_back(asArgument(each));
    else
        texts.push_back(asArgument(value));
    return texts;
}

} // namespace

void ConfigFile::addTo(CLI::App& app)
{
    app.set_config("--config", "", "A TOML file with options of the commands")->type_name("FILE");
    app.config_formatter(std::shared_ptr<CLI::Config>(new ConfigFile(app)));
    for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        command->fallthrough(); // so that --config may come after the command
}

std::vector<CLI::ConfigItem> ConfigFile::from_config(std::istream& input) const
{
    const auto file = m_App.get_config_ptr()->as<std::string>();
    std::vector<CLI::ConfigItem> found;
    for (const auto& [name, node] : parse(input, file)) {
        const std::string commandName(name.str());
        CLI::App* command = findCommand(m_App, commandName);
        if (command == nullptr || !node.is_table())
            refuse(file, name.source(), "there is no command '" + commandName + "' with options of its own");
        for (const auto& [key, value] : *node.as_table()) {
            const std::string keyName(key.str());
            if (findOption(*command, keyName) == nullptr)
                refuse(file, key.source(),
                       std::string(commandName).append(" has no option '").append(keyName) + "'");
            std::vector<std::string> arguments = asArguments(value);
            for (const std::string& argument : arguments)
                if (argument.empty())
                    refuse(file, key.source(),
                           "'" + keyName + "' takes a text, a number, true, false or a list of these");
            if (command->parsed())
                found.push_back(
                    {{commandName}, findOption(*command, keyName)->get_single_name(), std::move(arguments)});
        }
    }
    return found;
}

} // namespace centre
