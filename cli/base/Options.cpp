#include "cli/base/Options.h"

#include "cli/base/ExitCode.h"

#include <filesystem>
#include <fstream>

namespace cli {

namespace {

constexpr const char* kConnection = "Connection";
constexpr const char* kOutput = "Output";

void require(const std::string& value, const char* option, const char* variable, const char* example)
{
    if (value.empty()) {
        refuse(std::string("--") + option + " is missing: give --" + option + " " + example + ", set " +
               variable + ", or write '" + option + " = " + example + "' in ~/.config/lumo/profile.ini");
    }
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
    add("--centre", options.settings.centre, "LUMO_CENTRE", kConnection, "The centre's address")
        ->option_text("HOST:PORT");
    add("--token-file", options.settings.tokenFile, "LUMO_TOKEN_FILE", kConnection,
        "File that holds the user's token")
        ->option_text("FILE");
    add("--user", options.settings.user, "LUMO_USER", kConnection, "User name")->option_text("NAME");
    add("--company", options.settings.company, "LUMO_COMPANY", kConnection, "Company number")
        ->option_text("NUMBER");
    add("--timeout", options.timeout, "LUMO_TIMEOUT", kConnection,
        "Time limit of each call: 500ms, 10s, 2m; 0 for none (default 10s)")
        ->option_text("TIME");
    add("--tls-ca", options.settings.tlsCa, "LUMO_TLS_CA", kConnection, "Certificate authority to trust, PEM")
        ->option_text("FILE");
    flag("--tls", options.settings.tls, "LUMO_TLS", kConnection,
         "TLS to this machine too (other hosts always get it)");
    flag("--plain-text", options.settings.plainText, "LUMO_PLAIN_TEXT", kConnection,
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
    const std::string path =
        options.profile.empty() ? lumo::Session::Settings::defaultProfile() : options.profile;
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

void finishOptions(Options& options)
{
    lumo::Session::Settings& settings = options.settings;
    require(settings.centre, "centre", "LUMO_CENTRE", "HOST:PORT");
    require(settings.user, "user", "LUMO_USER", "NAME");
    require(settings.company, "company", "LUMO_COMPANY", "NUMBER");
    settings.timeout = lumo::Session::Settings::milliseconds(options.timeout);
    if (!options.codePage.empty())
        settings.codePage = options.codePage;
    if (settings.plainText && (settings.tls || !settings.tlsCa.empty()))
        refuse("--plain-text contradicts --tls and --tls-ca: give one or the other");
}

} // namespace cli
