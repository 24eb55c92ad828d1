#include "cli/commands/SharedOptions.h"

#include "cli/base/ExitCode.h"

namespace cli {

CLI::Option* addFlag(CLI::App& app, const char* name, bool& value, const char* description)
{
    return app.add_flag(name, value, description)->option_text(" ");
}

void explain(CLI::App& app, const std::string& text)
{
    app.footer(text + "\n\n" + kCommandFooter);
}

lumo::Place parsePlace(const std::string& text)
{
    lumo::Place place(text);
    if (place.isRoot())
        refuse("'/' means all disks: name one, as in /disk; 'lumo disks' lists them");
    return place;
}

lumo::Entry findFile(const lumo::Catalogue& catalogue, const lumo::Place& place, const std::string& typed)
{
    lumo::Entry found = place.isRoot() ? lumo::Entry() : catalogue.find(place);
    if (found.kind != lumo::Entry::Kind::File)
        refuse("'" + typed + "' is not a file");
    return found;
}

std::string wholeNumber(const std::string& text)
{
    const bool digits =
        !text.empty() && text.size() <= 10 && text.find_first_not_of("0123456789") == std::string::npos;
    return digits && std::stoull(text) <= std::numeric_limits<unsigned int>::max()
               ? std::string()
               : "'" + text + "' is not a whole number";
}

std::string positiveNumber(const std::string& text)
{
    const std::string problem = wholeNumber(text);
    const bool zero = problem.empty() && std::stoull(text) == 0;
    return zero ? "'" + text + "' is too small: write a number from 1" : problem;
}

void RecordOptions::addCsv(CLI::App& app)
{
    addFlag(app, "--csv", csv, "All fields as CSV with a header line; takes precedence over --json");
}

void RecordOptions::addCsvAndLimit(CLI::App& app)
{
    addCsv(app);
    addOption(app, "--limit", limit, "N",
              "Number of records to show in total (default: all); the centre sends all of them in any case")
        ->check(positiveNumber);
}

void RecordOptions::apply(Options& options)
{
    // The library recognises the texts of codes in this code page only.
    if (options.codePage.empty())
        options.codePage = "gbk";
    if (csv)
        form = Form::AsCsv;
    else if (options.json)
        form = Form::AsJson;
}

void MovingOptions::add(CLI::App& app)
{
    CLI::Option* const replace =
        addFlag(app, "--overwrite", overwrite, "Replace files that exist at the target");
    addFlag(app, "--keep", keep, "Keep files that exist there and count them as done (the default)")
        ->excludes(replace);
}

void MovingOptions::apply(Options& options)
{
    // File names need a code page that has every character.
    options.codePage = "utf8";
}

} // namespace cli
