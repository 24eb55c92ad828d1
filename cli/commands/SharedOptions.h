#ifndef LUMO_CLI_COMMANDS_SHAREDOPTIONS_H
#define LUMO_CLI_COMMANDS_SHAREDOPTIONS_H

#include "cli/base/Options.h"
#include "cli/output/RecordOutput.h"

#include "lumo/client/Catalogue.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <string>
#include <vector>

namespace cli {

// What several commands have in common: help texts, kinds of arguments, groups of options.

constexpr const char* kPlaceHelp =
    R"(PLACE is a path such as /disk/folder/file, or an identifier with its kind:
disk:1, folder:12, file:33.)";

constexpr const char* kKindHelp =
    R"(KIND is project, type, photo (frame photograph), sat (satellite image), ads (airborne
three-line image), control (control file), point (control point), dem, dsm, dom or dlg.)";

constexpr const char* kProjectHelp = "A project's identifier or name";

constexpr const char* kCommandFooter =
    "Options of connection and output, which every command takes: lumo --help";

/// An option whose value is shown as `text` in the help.
template <class Value>
CLI::Option* addOption(CLI::App& app, const char* name, Value& value, const char* text,
                       const std::string& description)
{
    return app.add_option(name, value, description)->option_text(text);
}
/// An argument that may be left out.
template <class Value>
CLI::Option* addOptionalArgument(CLI::App& app, const char* name, Value& value,
                                 const std::string& description)
{
    return addOption(app, name, value, " ", description);
}
/// An argument that must be given, once or, for a list, at least once.
template <class Value>
CLI::Option* addArgument(CLI::App& app, const char* name, Value& value, const std::string& description)
{
    return addOptionalArgument(app, name, value, description)->required();
}
CLI::Option* addFlag(CLI::App& app, const char* name, bool& value, const char* description);

/// Adds a text below the options in the help of a command.
void explain(CLI::App& app, const std::string& text);

/// A place that was typed; refuses "/", all disks.
lumo::Place parsePlace(const std::string& text);

/// The file of a place that was typed as `typed`; refuses a disk or a folder.
lumo::Entry findFile(const lumo::Catalogue& catalogue, const lumo::Place& place, const std::string& typed);

/// Validators of CLI11: an empty text, or what is wrong with the value.
std::string wholeNumber(const std::string& text);
std::string positiveNumber(const std::string& text);

/// How a command shows records of the image catalogue.
struct RecordOptions
{
    bool csv = false;
    unsigned int limit = std::numeric_limits<unsigned int>::max(); ///< records in total
    Form form = Form::AsTable;                                     ///< set by `apply`

    void addCsv(CLI::App& app);
    void addCsvAndLimit(CLI::App& app);
    /// Chooses the form and, unless the user did, the code page of these records.
    void apply(Options& options);
};

/// What a command that moves files does with files that exist at the target.
struct MovingOptions
{
    bool overwrite = false;
    bool keep = false; ///< the default, which the user may write

    void add(CLI::App& app);
    static void apply(Options& options);
};

} // namespace cli

#endif
