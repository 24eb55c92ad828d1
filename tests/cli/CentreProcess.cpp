#include "tests/cli/CentreProcess.h"

#include <signal.h>

#include <cstdlib>
#include <stdexcept>

CentreProcess::CentreProcess()
{
    done("lumo-centre init data --token-file token");
    done("lumo-centre add-box data B1 127.0.0.1:1");
}

void CentreProcess::serve(const std::vector<std::string>& arguments)
{
    if (m_Process != nullptr)
        stop();
    std::vector<std::string> words = {"lumo-centre", "serve", folder() / "data", "--listen",
                                      "127.0.0.1:0", "--box", "B1=127.0.0.1:0"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    m_Process = std::make_unique<Process>(command(words));
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

std::vector<std::string> CentreProcess::command(const std::vector<std::string>& words) const
{
    const auto folderOf = [](const char* path) { return std::filesystem::path(path).parent_path().string(); };
    std::vector<std::string> whole = {"/usr/bin/env",
                                      "PATH=" + folderOf(LUMO_PROGRAM) + ":" + folderOf(CENTRE_PROGRAM) +
                                          ":" + std::getenv("PATH"),
                                      "XDG_CONFIG_HOME=/nonexistent",
                                      "LUMO_CENTRE=" + m_Address,
                                      "LUMO_TOKEN_FILE=" + (folder() / "token").string(),
                                      "LUMO_USER=demo",
                                      "LUMO_COMPANY=LUMO",
                                      std::string("SAMPLES=") + LUMO_SAMPLES};
    whole.insert(whole.end(), words.begin(), words.end());
    return whole;
}

Outcome CentreProcess::shell(const std::string& line) const
{
    return run(command({"/bin/sh", "-c", "cd " + folder().string() + "; " + line}));
}

std::string CentreProcess::done(const std::string& line) const
{
    const Outcome outcome = shell(line);
    if (outcome.exitCode != 0)
        throw std::runtime_error(line + " failed: " + outcome.errors);
    return outcome.output;
}
