#include "centre/content/Backup.h"
#include "centre/endpoint/ServeLock.h"
#include "centre/program/Commands.h"
#include "centre/store/Schema.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

namespace centre {

namespace {

void requireFolder(const Arguments& arguments)
{
    if (isServer(arguments.data))
        throw Error(ExitCode::WrongUse,
                    "this is for data folders; pg_dump and pg_restore are for " + shownPlace(arguments.data));
}

ExitCode backUp(const Arguments& arguments)
{
    requireFolder(arguments);
    centre::backUp(arguments.data, arguments.backupFile);
    std::cout << "wrote the database of " << arguments.data << " to " << arguments.backupFile
              << "; the files of its boxes are not part of it\n";
    return ExitCode::Success;
}

/// Locks a data folder against processes that serve it or one of its boxes.
std::vector<std::unique_ptr<ServeLock>> lockAll(const std::string& dataFolder)
{
    std::vector<std::unique_ptr<ServeLock>> locks;
    if (!std::filesystem::exists(dataFolder + "/centre.db"))
        return locks;
    for (const auto& entry : std::filesystem::directory_iterator(dataFolder))
        if (entry.path().extension() == ".lock")
            locks.push_back(std::make_unique<ServeLock>(entry.path().string(), dataFolder));
    return locks;
}

ExitCode restore(const Arguments& arguments)
{
    requireFolder(arguments);
    const auto locks = lockAll(arguments.data);
    centre::restore(arguments.data, arguments.backupFile);
    std::cout << "restored " << arguments.data << " from " << arguments.backupFile << "\n";
    return ExitCode::Success;
}

} // namespace

void addBackup(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each = command(app, arguments, result, "backup",
                             "Write the database to a file, also while the folder is served", backUp);
    each->add_option("FILE", arguments.backupFile, "The file, which must not exist")
        ->type_name("")
        ->required();
    each = command(app, arguments, result, "restore",
                   "Replace the database by a backup, while nothing serves the folder", restore);
    each->add_option("FILE", arguments.backupFile, "The backup")->type_name("")->required();
}

} // namespace centre
