#include "cli/commands/Command.h"

#include "cli/commands/SharedOptions.h"

namespace cli {

CLI::App& CommandSet::declare(const char* name, const std::string& description)
{
    CLI::App* const app = m_App.add_subcommand(name, description)->fallthrough();
    app->footer(kCommandFooter)->group("Commands");
    return *app;
}

CommandSet CommandSet::addGroup(const char* name, const char* description)
{
    CLI::App& group = declare(name, description);
    group.require_subcommand(1);
    return {group, m_Given};
}

} // namespace cli
