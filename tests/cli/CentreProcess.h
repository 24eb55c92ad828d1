#ifndef LUMO_TESTS_CLI_CENTREPROCESS_H
#define LUMO_TESTS_CLI_CENTREPROCESS_H

#include "tests/support/Files.h"
#include "tests/support/Process.h"

#include <QTemporaryDir>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A development centre of its own: company LUMO, user demo, storage box B1; in a temporary folder, whose
/// folder "data" is its data folder and whose file "token" has the user's token.
class CentreProcess
{
public:
    CentreProcess();

    std::filesystem::path folder() const { return m_Folder.path().toStdString(); }

    /// Serves on free ports, no longer as before, with more arguments for the centre.
    void serve(const std::vector<std::string>& arguments = {});
    /// Ends it in good order; its exit code.
    int stop();
    void kill() { m_Process.reset(); }
    const std::string& address() const { return m_Address; }
    const Process& process() const { return *m_Process; }

    /// A command line with lumo and lumo-centre on its path and in the environment what lumo takes to log in.
    std::vector<std::string> command(const std::vector<std::string>& words) const;
    /// A command of the shell in folder().
    Outcome shell(const std::string& line) const;
    /// The output of one that must succeed.
    std::string done(const std::string& line) const;

private:
    QTemporaryDir m_Folder;
    std::string m_Address = "127.0.0.1:1"; ///< nobody listens there until it serves
    std::unique_ptr<Process> m_Process;
};

#endif
