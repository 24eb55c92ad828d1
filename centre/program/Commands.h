#ifndef LUMO_CENTRE_PROGRAM_COMMANDS_H
#define LUMO_CENTRE_PROGRAM_COMMANDS_H

#include "centre/base/Error.h"
#include "centre/content/DiskWalk.h"
#include "centre/content/Import.h"
#include "centre/content/Ingest.h"
#include "centre/content/Version.h"
#include "centre/observe/Observation.h"
#include "centre/server/Centre.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace centre {

/// The arguments of all commands.
struct Arguments
{
    std::string data;
    std::string companyNo = "LUMO";
    std::string userName = "demo";
    std::string tokenFile;
    bool readOnly = false;
    std::string role = "writer";
    std::string tokenName = "first";
    std::string until;
    bool replaceToken = false;
    std::string sharedName;
    std::string otherCompanyNo;
    std::string boxCode;
    std::string boxAddress;
    std::uint32_t areaId = 0;
    std::string areaName;
    std::optional<std::uint32_t> areaParent;
    std::string programNo;
    std::string moduleNo;
    Version version;
    ImportOptions import;
    IngestOptions ingest;
    DiskFilter disks;
    bool readDigests = false;
    bool json = false;
    bool remove = false;
    ServeOptions serve;
    ObserveOptions observe;
    std::vector<std::string> boxes;
    std::string recordFile;
    std::string backupFile;
    std::string copyTarget;
    std::uint32_t sampleImages = 0;
    std::uint64_t sampleSeed = 1;
};

/// Adds a command on a data folder, with the function that runs it.
CLI::App* command(CLI::App& app, Arguments& arguments, ExitCode& result, const std::string& name,
                  const std::string& description, ExitCode (*run)(const Arguments&));

/// Writes a user's new token to its file or the output. Shows a token that can't be written to its file,
/// since it is the only copy.
ExitCode handOver(const Arguments& arguments, const std::string& token);

/// Adds the option of that file.
CLI::Option* addTokenFile(CLI::App* command, Arguments& arguments);

// Commands by family: data folders, companies, boxes and areas; users, tokens, shares and lists; what a
// catalogue holds; a folder of images; whether the disks agree; backups and copies; services.
void addAdministration(CLI::App& app, Arguments& arguments, ExitCode& result);
void addAccounts(CLI::App& app, Arguments& arguments, ExitCode& result);
void addContent(CLI::App& app, Arguments& arguments, ExitCode& result);
void addIngest(CLI::App& app, Arguments& arguments, ExitCode& result);
void addChecking(CLI::App& app, Arguments& arguments, ExitCode& result);
void addBackup(CLI::App& app, Arguments& arguments, ExitCode& result);
void addServing(CLI::App& app, Arguments& arguments, ExitCode& result);

} // namespace centre

#endif
