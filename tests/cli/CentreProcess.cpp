#include "tests/cli/CentreProcess.h"

#include <signal.h>

#include <fstream>
#include <stdexcept>

namespace clitest {

namespace {

std::filesystem::path makeFolder()
{
    std::string path = (std::filesystem::temp_directory_path() / "lumo-test-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    return path;
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(makeFolder())
{
}

TemporaryFolder::~TemporaryFolder()
{
    std::filesystem::remove_all(path);
}

CentreProcess::CentreProcess()
{
    mustRun({"init", (m_Folder.path / "data").string(), "--token-file", tokenFile()});
}

void CentreProcess::mustRun(std::vector<std::string> command) const
{
    command.insert(command.begin(), CENTRE_PROGRAM);
    const Outcome outcome = run(command);
    if (outcome.exitCode != 0) {
        throw std::runtime_error(command[1] + " failed: " + outcome.errors);
    }
}

void CentreProcess::import(const std::filesystem::path& folder, const std::string& disk)
{
    mustRun({"import", (m_Folder.path / "data").string(), folder.string(), "--disk", disk});
}

void CentreProcess::serve(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{CENTRE_PROGRAM, "serve", (m_Folder.path / "data").string(), "--listen",
                                     "127.0.0.1:0"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    m_Process = std::make_unique<Process>(command);
    const std::string line = m_Process->readLine();
    m_Address = line.substr(line.rfind(' ') + 1);
    if (m_Address.find(':') == std::string::npos) {
        throw std::runtime_error("the centre does not serve: " + line);
    }
}

int CentreProcess::stop()
{
    m_Process->signal(SIGTERM);
    return m_Process->wait();
}

Outcome CentreProcess::lumo(const std::vector<std::string>& arguments,
                            const std::vector<std::string>& environment) const
{
    std::vector<std::string> variables{"LUMO_CENTRE=" + m_Address, "LUMO_TOKEN_FILE=" + tokenFile(),
                                       "LUMO_COMPANY=LUMO", "LUMO_USER=demo", "XDG_CONFIG_HOME=/nonexistent"};
    variables.insert(variables.end(), environment.begin(), environment.end());
    std::vector<std::string> command{LUMO_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, variables);
}

void writeFile(const std::filesystem::path& path, const std::string& content)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << content;
}

} // namespace clitest
