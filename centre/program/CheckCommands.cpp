#include "centre/program/Commands.h"

#include "centre/base/Text.h"
#include "centre/content/Check.h"
#include "centre/content/Prune.h"
#include "centre/program/Progress.h"
#include "centre/store/Store.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <vector>

namespace centre {

namespace {

constexpr std::uint64_t kExamples = 10; // of each kind of difference, in a report for people

std::string described(const DiskEntry& entry)
{
    return (entry.isFolder ? "folder " : "file ") + (entry.id == 0 ? "" : std::to_string(entry.id) + " ") +
           escaped(entry.below);
}

std::string described(const Difference& difference)
{
    const DiskEntry& entry = difference.entry;
    switch (difference.kind) {
    case Difference::Kind::Size:
        return described(entry) + ", " + counted(entry.size, "byte") + ", in the catalogue " +
               std::to_string(entry.catalogueSize.value_or(0));
    case Difference::Kind::Digest:
        return described(entry) + ", " + difference.digest + ", in the catalogue " + entry.catalogueDigest;
    case Difference::Kind::Unread:
        return escaped(difference.path) + ": " + difference.reason;
    default:
        return described(entry);
    }
}

nlohmann::ordered_json json(const Disk& disk)
{
    return {{"disk", disk.name}, {"company", disk.companyNo}};
}

nlohmann::ordered_json json(const Disk& disk, const Difference& difference)
{
    nlohmann::ordered_json line = json(disk);
    line["difference"] = nameOf(difference.kind);
    if (difference.kind == Difference::Kind::Unread) {
        line["path"] = escaped(difference.path);
        line["reason"] = difference.reason;
        return line;
    }
    const DiskEntry& entry = difference.entry;
    line["type"] = entry.isFolder ? "folder" : "file";
    if (entry.id != 0)
        line["id"] = entry.id;
    line["path"] = entry.below;
    if (!entry.isFolder && entry.real == DiskEntry::Real::Present)
        line["size"] = entry.size;
    if (entry.catalogueSize)
        line["catalogueSize"] = *entry.catalogueSize;
    if (!difference.digest.empty()) {
        line["digest"] = difference.digest;
        line["catalogueDigest"] = entry.catalogueDigest;
    }
    return line;
}

constexpr Difference::Kind kDifferences[] = {Difference::Kind::Missing,   Difference::Kind::Extra,
                                             Difference::Kind::Size,      Difference::Kind::Digest,
                                             Difference::Kind::OtherKind, Difference::Kind::Unread};

nlohmann::ordered_json json(const Disk& disk, const CheckReport& report)
{
    nlohmann::ordered_json line = json(disk);
    line["root"] = disk.rootPath;
    line["folders"] = report.folders;
    line["files"] = report.files;
    line["bytes"] = report.bytes;
    line["unknownSizes"] = report.unknownSizes;
    line["digests"] = report.digests;
    for (const Difference::Kind kind : kDifferences)
        line[nameOf(kind)] = report.count(kind);
    line["links"] = report.notServed.links;
    line["special"] = report.notServed.special;
    line["partial"] = report.notServed.partial;
    line["names"] = report.notServed.names;
    return line;
}

/// Collects the first differences of each kind, and prints the report of a disk.
class TextReport
{
public:
    void add(const Difference& difference)
    {
        std::vector<std::string>& examples = m_Examples[difference.kind];
        if (examples.size() < kExamples)
            examples.push_back(described(difference));
    }

    void print(const Disk& disk, const CheckReport& report)
    {
        std::cout << "disk " << disk.name << " of " << disk.companyNo << ", " << escaped(disk.rootPath)
                  << ": " << counted(report.folders, "folder") << " and " << counted(report.files, "file")
                  << " agree";
        if (report.digests > 0)
            std::cout << ", " << report.digests << " by digest";
        if (report.unknownSizes > 0)
            std::cout << ", " << report.unknownSizes << " by name only";
        std::string counts;
        for (const Difference::Kind kind : kDifferences)
            counts += "; " + std::to_string(report.count(kind)) + " " + words(kind);
        std::cout << counts << "; not served: " << report.notServed.text() << "\n";
        for (const auto& [kind, examples] : m_Examples) {
            for (const std::string& example : examples)
                std::cout << "  " << words(kind) << ": " << example << "\n";
            if (report.count(kind) > examples.size())
                std::cout << "  and " << report.count(kind) - examples.size() << " more " << words(kind)
                          << "\n";
        }
    }

private:
    static std::string words(Difference::Kind kind)
    {
        switch (kind) {
        case Difference::Kind::Size:
        case Difference::Kind::Digest:
        case Difference::Kind::OtherKind:
            return "of another " + nameOf(kind);
        case Difference::Kind::Unread:
            return "not readable";
        default:
            return nameOf(kind);
        }
    }

    std::map<Difference::Kind, std::vector<std::string>> m_Examples;
};

CheckReport checkDisk(const Arguments& arguments, Store& store, const Disk& disk)
{
    Progress progress("entry", "entries");
    TextReport text;
    CheckOptions options;
    options.readDigests = arguments.readDigests;
    options.progress = progress.function();
    options.report = [&](const Difference& difference) {
        if (arguments.json)
            std::cout << json(disk, difference).dump() << "\n";
        else
            text.add(difference);
    };
    CheckReport report = checkDisk(store, disk, options);
    progress.clear();
    if (arguments.json)
        std::cout << json(disk, report).dump() << "\n";
    else
        text.print(disk, report);
    return report;
}

ExitCode check(const Arguments& arguments)
{
    Store store(arguments.data);
    const std::vector<Disk> disks = findDisks(store, arguments.disks);
    if (disks.empty() &&
        !(arguments.disks.name + arguments.disks.companyNo + arguments.disks.boxCode).empty())
        throw Error(ExitCode::Failed, "there is no such disk");
    bool differs = false;
    bool incomplete = false;
    for (const Disk& disk : disks) {
        try {
            const CheckReport report = checkDisk(arguments, store, disk);
            differs = differs || report.differs();
            incomplete = incomplete || report.count(Difference::Kind::Unread) > 0;
        } catch (const Error& error) {
            std::cerr << "lumo-centre: not compared: " << error.what() << "\n";
            incomplete = true;
        }
    }
    return differs ? ExitCode::Differs : incomplete ? ExitCode::Incomplete : ExitCode::Success;
}

PruneReport pruneDisk(const Arguments& arguments, Store& store, const Disk& disk)
{
    Progress progress("entry", "entries");
    PruneOptions options;
    options.remove = arguments.remove;
    options.progress = progress.function();
    options.removed = [&](const DiskEntry& entry) {
        progress.clear();
        std::cout << (arguments.remove ? "removed " : "would remove ") << described(entry) << "\n";
    };
    options.kept = [&](const DiskEntry& entry, const std::string& records) {
        progress.clear();
        std::cout << "kept " << described(entry) << ", which is gone: it is the main file of " << records
                  << "\n";
    };
    options.skipped = [&](const std::string& path, const std::string& reason) {
        progress.clear();
        std::cerr << "lumo-centre: not examined: " << escaped(path) << ": " << reason << "\n";
    };
    return pruneDisk(store, disk, options);
}

ExitCode prune(const Arguments& arguments)
{
    Store store(arguments.data);
    store.companyId(arguments.companyNo); // throws if there is no such company
    const std::vector<Disk> disks = findDisks(store, {arguments.disks.name, arguments.companyNo, ""});
    if (arguments.disks.name.empty() || disks.empty())
        throw Error(ExitCode::Failed, "there is no disk " + escaped(arguments.disks.name) + " of company " +
                                          escaped(arguments.companyNo));
    const PruneReport report = pruneDisk(arguments, store, disks.front());
    std::cout << (arguments.remove ? "removed from disk " : "would remove from disk ") << disks.front().name
              << ": " << counted(report.files, "file") << " and " << counted(report.folders, "folder")
              << ", with " << counted(report.links, "link") << " and " << counted(report.comments, "comment")
              << "; " << counted(report.kept, "main file") << " kept";
    if (report.skipped > 0)
        std::cout << "; " << counted(report.skipped, "place") << " not examined";
    std::cout << (arguments.remove ? "" : "; --remove removes them") << "\n";
    return report.skipped > 0 ? ExitCode::Incomplete : ExitCode::Success;
}

} // namespace

void addChecking(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each = command(app, arguments, result, "check", "Compare the catalogue and the disks", check);
    each->add_option("--disk", arguments.disks.name, "Only the disks of this name")->type_name("NAME");
    each->add_option("--company", arguments.disks.companyNo, "Only the disks of this company")
        ->type_name("NO");
    each->add_option("--box", arguments.disks.boxCode, "Only the disks of this storage box")
        ->type_name("CODE");
    each->add_flag("--digests", arguments.readDigests, "Read the files whose digest the catalogue knows");
    each->add_flag("--json", arguments.json,
                   "Write an object for each difference and for each disk, as lines");

    each = command(app, arguments, result, "prune",
                   "Remove the entries of a disk whose file is gone; without --remove say which", prune);
    each->add_option("--disk", arguments.disks.name, "The disk's name")->type_name("NAME")->required();
    each->add_option("--company", arguments.companyNo, "The number of the company that owns the disk")
        ->type_name("NO")
        ->capture_default_str();
    each->add_flag("--remove", arguments.remove, "Remove them");
}

} // namespace centre
