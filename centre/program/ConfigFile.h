#ifndef LUMO_CENTRE_PROGRAM_CONFIGFILE_H
#define LUMO_CENTRE_PROGRAM_CONFIGFILE_H

#include <CLI/CLI.hpp>

#include <istream>
#include <string>
#include <vector>

namespace centre {

/// Reads a TOML file with a table for each command, whose keys are the command's options and, in lower case,
/// its arguments. Passes on what is there for the command that was typed; what the command line says wins.
class ConfigFile : public CLI::Config
{
public:
    /// Adds the option `--config` to a program with its commands.
    static void addTo(CLI::App& app);

    /// Throws Error(WrongUse), which names the file and the line, for what is not TOML, and for a command, a
    /// key or a kind of value that does not exist; for other commands' tables, too. No message has a value.
    std::vector<CLI::ConfigItem> from_config(std::istream& input) const override;

    std::string to_config(const CLI::App*, bool, bool, std::string) const override { return {}; }

private:
    explicit ConfigFile(CLI::App& app) : m_App(app) {}

    CLI::App& m_App;
};

} // namespace centre

#endif
