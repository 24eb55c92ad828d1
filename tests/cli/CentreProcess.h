#ifndef LUMO_TESTS_CLI_CENTREPROCESS_H
#define LUMO_TESTS_CLI_CENTREPROCESS_H

#include "tests/cli/Process.h"

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

/// A development centre of its own: company LUMO, user demo, the disks that were imported.
class CentreProcess
{
public:
    CentreProcess();

    /// Where to put files to import, and other files of the test.
    std::filesystem::path folder() const { return m_Folder.path; }
    std::string tokenFile() const { return (m_Folder.path / "token").string(); }
    const std::string& address() const { return m_Address; }

    void import(const std::filesystem::path& folder, const std::string& disk);
    /// Starts to serve on a free port, with more arguments for the centre.
    void serve(const std::vector<std::string>& arguments = {});
    /// Ends it in good order; its exit code.
    int stop();

    /// lumo with what it takes to log in.
    Outcome lumo(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment = {}) const;

private:
    void mustRun(std::vector<std::string> command) const;

    TemporaryFolder m_Folder;
    std::string m_Address;
    std::unique_ptr<Process> m_Process;
};

/// Writes a file with its folders.
void writeFile(const std::filesystem::path& path, const std::string& content);

} // namespace clitest

#endif
