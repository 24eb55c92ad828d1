#include "centre/base/Text.h"
#include "centre/content/Backup.h"
#include "centre/content/Copy.h"
#include "centre/endpoint/ServeLock.h"
#include "centre/program/Commands.h"
#include "centre/program/Progress.h"
#include "centre/store/Schema.h"

#include <chrono>
#include <filesystem>
#include <iomanip>
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

ExitCode copy(const Arguments& arguments)
{
    const auto start = std::chrono::steady_clock::now();
    const TableCounts counts = [&arguments] {
        Progress progress("row", "rows");
        return copyCatalogue(arguments.data, arguments.copyTarget, progress.function());
    }();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::uint64_t all = 0;
    for (const auto& [table, count] : counts) {
        std::cout << table << ": " << counted(count, "row") << "\n";
        all += count;
    }
    std::cout << "copied " << shownPlace(arguments.data) << " to " << shownPlace(arguments.copyTarget) << ": "
              << counted(all, "row") << "; " << std::fixed << std::setprecision(2) << time.count() << " s\n";
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

    each = app.add_subcommand("copy", "Copy a catalogue to another database")->group("Commands");
    const std::string place = ", a data folder or postgresql://...";
    each->add_option("FROM", arguments.data, "The catalogue" + place)->type_name("")->required();
    each->add_option("TO", arguments.copyTarget, "The new one, which is made" + place)
        ->type_name("")
        ->required();
    each->callback([&arguments, &result] { result = copy(arguments); });
}

} // namespace centre
