#include "cli/base/Options.h"

#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"

#include <fstream>

namespace cli {

namespace {

/// Refuses settings that don't suffice; the message names all that are missing.
void requireComplete(const lumo::Session::Settings& settings)
{
    const struct
    {
        const std::string& value;
        std::string option;
        const char* variable;
        std::string example;
    } kNeeded[] = {{settings.centre, "centre", "LUMO_CENTRE", "HOST:PORT"},
                   {settings.user, "user", "LUMO_USER", "NAME"},
                   {settings.company, "company", "LUMO_COMPANY", "NUMBER"}};
    std::string names, given, variables, lines;
    int missing = 0;
    for (const auto& one : kNeeded) {
        if (!one.value.empty())
            continue;
        const bool first = ++missing == 1;
        names += (first ? "--" : ", --") + one.option;
        given += (first ? "--" : " --") + one.option + " " + one.example;
        variables += std::string(first ? "" : ", ") + one.variable;
        lines += (first ? "'" : ", '") + one.option + " = " + one.example + "'";
    }
    if (missing > 0)
        refuse(names + (missing == 1 ? " is" : " are") + " missing: give " + given + ", set " + variables +
               ", or write " + lines + " in ~/.config/lumo/profile.ini");
}

std::string knownCodePage(const std::string& name)
{
    return name == "utf8" || name == "gbk" ? "" : "'" + name + "' is neither utf8 nor gbk";
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
    const char* group = "Connection";
    const auto add = [&](const char* name, auto& value, const char* environment, const char* text,
                         const char* description) {
        return app.add_option(name, value, description)
            ->option_text(text)
            ->envname(environment)
            ->group(group);
    };
    const auto flag = [&](const char* name, bool& value, const char* environment, const char* description) {
        // A blank in place of the name of the variable, which is in the footer.
        app.add_flag(name, value, description)->option_text(" ")->envname(environment)->group(group);
    };
    lumo::Session::Settings& settings = options.settings;
    add("--centre", settings.centre, "LUMO_CENTRE", "HOST:PORT", "The centre's address");
    add("--token-file", settings.tokenFile, "LUMO_TOKEN_FILE", "FILE", "File that holds the user's token");
    add("--user", settings.user, "LUMO_USER", "NAME", "User name");
    add("--company", settings.company, "LUMO_COMPANY", "NUMBER", "Company number");
    add("--timeout", options.timeout, "LUMO_TIMEOUT", "TIME",
        "Time limit of each call: 500ms, 10s, 2m; 0 for none (default 10s)");
    add("--tls-ca", settings.tlsCa, "LUMO_TLS_CA", "FILE", "Certificate authority to trust, PEM");
    flag("--tls", settings.tls, "LUMO_TLS", "TLS to this machine too (other hosts always get it)");
    flag("--plain-text", settings.plainText, "LUMO_PLAIN_TEXT",
         "Plain text to another host too; never with a token");
    add("--profile", options.profile, "LUMO_PROFILE", "FILE",
        "Settings file (default ~/.config/lumo/profile.ini)");
    group = "Output";
    flag("--json", options.json, "LUMO_JSON",
         "JSON instead of text: one document; transfers and registrations print events");
    add("--log", options.log, "LUMO_LOG", "FILE", "Append the library's log to this file");
    add("--code-page", options.codePage, "LUMO_CODE_PAGE", "NAME",
        "Code page of the library's records: utf8 or gbk")
        ->check(knownCodePage);
}

void applyProfile(CLI::App& app, Options& options)
{
    const std::string path =
        options.profile.empty() ? lumo::Session::Settings::defaultProfile() : options.profile;
    if (path.empty())
        return;
    std::ifstream file = openedFile(path, "the profile '" + path + "'");
    // A value is all that follows the '=', blanks, commas and '#' too.
    CLI::ConfigINI ini;
    ini.comment('\n')->arrayBounds('\n', '\n')->arrayDelimiter('\n');
    for (const CLI::ConfigItem& item : ini.from_config(file))
        applySetting(app, path, item);
}

void finishOptions(Options& options)
{
    lumo::Session::Settings& settings = options.settings;
    requireComplete(settings);
    settings.timeout = lumo::Session::Settings::milliseconds(options.timeout);
    if (!options.codePage.empty())
        settings.codePage = options.codePage;
}

} // namespace cli
