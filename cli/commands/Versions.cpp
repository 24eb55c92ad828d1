#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"
#include "cli/progress/Transfer.h"

namespace cli {

namespace {

using Product = lumo::Centre::Product;

class VersionsCommand : public Command
{
public:
    explicit VersionsCommand(CLI::App& app)
    {
        addOption(app, "--program", m_Program, "NO", "The program's number");
        addOption(app, "--module", m_Module, "NO", "The module's number");
        addOptionalArgument(app, "VERSION", m_Version, "The version's number");
    }

    void check(Options& /*options*/) override
    {
        if (m_Program.empty() == m_Module.empty())
            refuse("give either --program NO or --module NO");
        m_Product = m_Module.empty() ? Product{Product::Kind::Program, m_Program}
                                     : Product{Product::Kind::Module, m_Module};
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Centre::Version version = session.centre().version(m_Product, m_Version);
        printFields({{{"text1", "Name"}, version.name},
                     {{"text2", "Version"}, version.number},
                     {{"text3", "Released"}, version.released},
                     {{"text4", "Storage box"}, version.box},
                     {{"text5", "Notes"}, version.notes}},
                    json);
    }

private:
    std::string m_Program;
    std::string m_Module;
    std::string m_Version;
    Product m_Product;
};

/// get-program and get-module.
class PackageCommand : public Command
{
public:
    PackageCommand(CLI::App& app, Product::Kind kind) : m_Product{kind, {}}
    {
        m_Moving.add(app);
        addArgument(app, "NO", m_Product.number, std::string("The ") + word() + "'s number");
        addArgument(app, "VERSION", m_Version, "The version's number");
        addOptionalArgument(app, "DIR", m_Folder, "The local folder for it (default: the current one)");
        addOption(app, "--box", m_Box, "CODE",
                  "The storage box that has it (default: the one that the version names, or your company's "
                  "only one)");
    }

    void check(Options& options) override { MovingOptions::apply(options); }

    void run(lumo::Session& session, bool json) override
    {
        static_cast<void>(session.centre().version(m_Product, m_Version)); // throws when there is none
        makeFolder(m_Folder);
        Transfer transfer;
        transfer.source = word() + (" " + m_Product.number) + " " + m_Version;
        transfer.target = m_Folder;
        transfer.folder = m_Folder;
        transfer.reportsProgress = true;
        transfer.overwrite = m_Moving.overwrite;
        transfer.mustStart = true;
        transfer.start = [&](const lumo::Transfers::Options& options) {
            return std::make_shared<lumo::Transfer>(
                session.transfers().getPackage(m_Product, m_Version, m_Box, m_Folder, options));
        };
        runTransfers({transfer}, json);
    }

private:
    const char* word() const { return m_Product.kind == Product::Kind::Program ? "program" : "module"; }

    MovingOptions m_Moving;
    Product m_Product;
    std::string m_Version;
    std::string m_Folder = ".";
    std::string m_Box; ///< its code, or empty
};

} // namespace

void addVersions(CommandSet& commands)
{
    commands.add<PackageCommand>("get-program", "Fetch the package of a version of a program",
                                 Product::Kind::Program);
    commands.add<PackageCommand>("get-module", "Fetch the package of a version of a module",
                                 Product::Kind::Module);
    commands.add<VersionsCommand>("versions",
                                  "Show a version of a program or a module (without VERSION: the latest)");
}

} // namespace cli
