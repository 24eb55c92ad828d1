#ifndef LUMO_TESTS_CLI_CENTREPROCESS_H
#define LUMO_TESTS_CLI_CENTREPROCESS_H

#include "tests/support/Files.h"
#include "tests/support/Process.h"

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace clitest {

/// A folder that is removed with everything in it.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path path;
};

/// A development centre of its own: company LUMO, user demo, storage box B1, the disks that were imported.
class CentreProcess
{
public:
    CentreProcess();

    /// Where to put files to import, and other files of the test.
    std::filesystem::path folder() const { return m_Folder.path; }
    std::string tokenFile() const { return (m_Folder.path / "token").string(); }
    const std::string& address() const { return m_Address; }

    /// lumo-centre with a command, the data folder and more arguments; throws when it fails.
    void administrate(const std::string& command, const std::vector<std::string>& arguments) const;
    void import(const std::filesystem::path& folder, const std::string& disk);
    /// Starts to serve on free ports, with more arguments for the centre.
    void serve(const std::vector<std::string>& arguments = {});
    /// Ends it in good order; its exit code.
    int stop();
    void kill() { m_Process.reset(); }

    /// The command line of lumo with what it takes to log in.
    std::vector<std::string> lumoCommand(const std::vector<std::string>& arguments) const;
    /// lumo with what it takes to log in.
    Outcome lumo(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment = {}) const;
    /// A command of the shell in folder(), with lumo and lumo-centre on its path and the environment set for
    /// them.
    Outcome shell(const std::string& command) const;

private:
    TemporaryFolder m_Folder;
    std::string m_Address = "127.0.0.1:1"; ///< nobody listens until it serves
    std::unique_ptr<Process> m_Process;
};

/// The output of a command that must succeed and complain of nothing; as JSON.
std::string shown(const Outcome& outcome);
nlohmann::json parsed(const Outcome& outcome);

} // namespace clitest

#endif
