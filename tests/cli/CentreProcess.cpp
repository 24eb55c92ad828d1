#include "tests/cli/CentreProcess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace clitest {

namespace {

std::filesystem::path makeFolder()
{
    std::string path = (std::filesystem::temp_directory_path() / "lumo-test-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
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
    administrate("init", {"--token-file", tokenFile()});
    administrate("add-box", {"B1", "127.0.0.1:1"});
}

void CentreProcess::administrate(const std::string& command, const std::vector<std::string>& arguments) const
{
    std::vector<std::string> whole{CENTRE_PROGRAM, command, (m_Folder.path / "data").string()};
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    const Outcome outcome = run(whole);
    if (outcome.exitCode != 0)
        throw std::runtime_error(command + " failed: " + outcome.errors);
}

void CentreProcess::import(const std::filesystem::path& folder, const std::string& disk)
{
    administrate("import", {folder.string(), "--disk", disk, "--box", "B1"});
}

void CentreProcess::serve(const std::vector<std::string>& arguments)
{
    if (m_Process != nullptr)
        stop();
    std::vector<std::string> command{CENTRE_PROGRAM,  "serve",       (m_Folder.path / "data").string(),
                                     "--listen",      "127.0.0.1:0", "--box",
                                     "B1=127.0.0.1:0"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    m_Process = std::make_unique<Process>(command);
    std::string line = m_Process->readLine();
    // Its boxes and the folders it copies to come first.
    while (!line.empty() && line.find(": serving ") == std::string::npos)
        line = m_Process->readLine();
    m_Address = line.substr(line.rfind(' ') + 1);
    if (m_Address.find(':') == std::string::npos)
        throw std::runtime_error("the centre does not serve: " + line);
}

int CentreProcess::stop()
{
    m_Process->signal(SIGTERM);
    const int exitCode = m_Process->wait();
    m_Process.reset();
    return exitCode;
}

std::vector<std::string> CentreProcess::lumoCommand(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> command{LUMO_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const auto login = [&command](const char* option, const std::string& value) {
        if (std::find(command.begin(), command.end(), option) == command.end())
            command.insert(command.begin() + 1, {option, value});
    };
    login("--centre", m_Address);
    login("--token-file", tokenFile());
    login("--company", "LUMO");
    login("--user", "demo");
    return command;
}

Outcome CentreProcess::lumo(const std::vector<std::string>& arguments,
                            const std::vector<std::string>& environment) const
{
    std::vector<std::string> variables{"XDG_CONFIG_HOME=/nonexistent"};
    variables.insert(variables.end(), environment.begin(), environment.end());
    return run(lumoCommand(arguments), variables);
}

Outcome CentreProcess::shell(const std::string& command) const
{
    const auto programs = [](const char* path) { return std::filesystem::path(path).parent_path().string(); };
    return run({"/bin/sh", "-c", "cd " + m_Folder.path.string() + "; " + command},
               {"PATH=" + programs(LUMO_PROGRAM) + ":" + programs(CENTRE_PROGRAM) + ":" + std::getenv("PATH"),
                "XDG_CONFIG_HOME=/nonexistent", "LUMO_CENTRE=" + m_Address, "LUMO_TOKEN_FILE=" + tokenFile(),
                "LUMO_USER=demo", "LUMO_COMPANY=LUMO", "SAMPLES=" LUMO_SAMPLES});
}

std::string shown(const Outcome& outcome)
{
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
}

nlohmann::json parsed(const Outcome& outcome)
{
    return nlohmann::json::parse(shown(outcome), nullptr, false);
}

} // namespace clitest
