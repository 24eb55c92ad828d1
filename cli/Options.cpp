#include "cli/Options.h"

#include "cli/ExitCode.h"

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>

namespace cli {

namespace {

constexpr const char* kConnection = "Connection";
constexpr const char* kOutput = "Output";

std::string defaultProfile()
{
    const char* const configuration = std::getenv("XDG_CONFIG_HOME");
    const char* const home = std::getenv("HOME");
    std::filesystem::path folder;
    if (configuration != nullptr && *configuration != '\0')
        folder = configuration;
    else if (home != nullptr && *home != '\0')
        folder = std::filesystem::path(home) / ".config";
    else
        return {};
    const std::filesystem::path path = folder / "lumo" / "profile.ini";
    std::error_code ignored;
    return std::filesystem::exists(path, ignored) ? path.string() : std::string();
}

void applySetting(CLI::App& app, const std::string& path, const CLI::ConfigItem& item)
{
    // The reader reports where a section begins and ends; settings in it have a full name.
    if (item.name == "++" || item.name == "--")
        return;
    CLI::Option* const option =
        item.fullname() == "profile" ? nullptr : app.get_option_no_throw("--" + item.fullname());
    if (option == nullptr || !option->get_configurable()) {
        refuse(path + ": '" + item.fullname() +
               "' is not a setting; settings are the long options without their "
               "dashes, as in: centre = localhost:7400");
    }
    // Set on the command line or in the environment, which take precedence.
    if (option->count() > 0)
        return;
    try {
        if (option->get_expected_min() == 0)
            option->add_result(app.get_config_formatter()->to_flag(item));
        else
            option->add_result(item.inputs);
        option->run_callback();
    } catch (const CLI::ParseError& error) {
        refuse(path + ": " + item.fullname() + ": " + error.what());
    }
}

} // namespace

void addOptions(CLI::App& app, Options& options)
{
    const auto add = [&app](const char* name, auto& value, const char* environment, const char* group,
                            const char* description) {
        return app.add_option(name, value, description)->envname(environment)->group(group);
    };
    const auto flag = [&app](const char* name, bool& value, const char* environment, const char* group,
                             const char* description) {
        // A blank in place of the name of the variable, which is in the footer.
        return app.add_flag(name, value, description)->envname(environment)->group(group)->option_text(" ");
    };
    add("--centre", options.centre, "LUMO_CENTRE", kConnection, "The centre's address")
        ->option_text("HOST:PORT");
    add("--token-file", options.tokenFile, "LUMO_TOKEN_FILE", kConnection, "File that holds the user's token")
        ->option_text("FILE");
    add("--user", options.user, "LUMO_USER", kConnection, "User name")->option_text("NAME");
    add("--company", options.company, "LUMO_COMPANY", kConnection, "Company number")->option_text("NUMBER");
    add("--timeout", options.timeout, "LUMO_TIMEOUT", kConnection,
        "Time limit of each call: 500ms, 10s, 2m; 0 for none (default 10s)")
        ->option_text("TIME");
    add("--tls-ca", options.tlsCa, "LUMO_TLS_CA", kConnection, "Certificate authority to trust, PEM")
        ->option_text("FILE");
    flag("--tls", options.tls, "LUMO_TLS", kConnection,
         "TLS to this machine too (other hosts always get it)");
    flag("--plain-text", options.plainText, "LUMO_PLAIN_TEXT", kConnection,
         "Plain text to another host too; never with a token");
    add("--profile", options.profile, "LUMO_PROFILE", kConnection,
        "Settings file (default ~/.config/lumo/profile.ini)")
        ->option_text("FILE");
    flag("--json", options.json, "LUMO_JSON", kOutput,
         "JSON instead of text: a document, or events of transfers");
    add("--log", options.log, "LUMO_LOG", kOutput, "Append the library's log to this file")
        ->option_text("FILE");
    add("--code-page", options.codePage, "LUMO_CODE_PAGE", kOutput,
        "Code page of the records inside: utf8 or gbk")
        ->option_text("NAME")
        ->check(CLI::IsMember({"utf8", "gbk"}));
}

void applyProfile(CLI::App& app, Options& options)
{
    const std::string path = options.profile.empty() ? defaultProfile() : options.profile;
    if (path.empty())
        return;
    std::ifstream file(path);
    std::error_code ignored;
    if (!file || std::filesystem::is_directory(path, ignored))
        refuse("can't read the profile '" + path + "'");
    // A value is all that follows the '=', blanks, commas and '#' too.
    CLI::ConfigINI ini;
    ini.comment('\n')->arrayBounds('\n', '\n')->arrayDelimiter('\n');
    for (const CLI::ConfigItem& item : ini.from_config(file))
        applySetting(app, path, item);
}

unsigned int parseTimeout(const std::string& text)
{
    static const struct
    {
        const char* unit;
        unsigned int milliseconds;
    } kUnits[] = {{"", 1}, {"ms", 1}, {"s", 1000}, {"m", 60000}};
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const std::string unit(stop, end);
    for (const auto& known : kUnits)
        if (error == std::errc() && unit == known.unit &&
            number <= std::numeric_limits<unsigned int>::max() / known.milliseconds)
            return number * known.milliseconds;
    refuse("'" + text +
           "' is not a time limit: write a whole number and its unit, as in 500ms, 10s or "
           "2m; 0 for no limit");
}

} // namespace cli
