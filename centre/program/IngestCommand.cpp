#include "centre/program/Commands.h"

#include "centre/base/Text.h"
#include "centre/program/Progress.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/Store.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <iomanip>
#include <iostream>

namespace centre {

namespace {

using Json = nlohmann::ordered_json;
using Outcome = IngestedFile::Outcome;

constexpr std::uint64_t kShownFiles = 20; // of refusals, in a report for people

const char* nameOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Taken:
        return "taken";
    case Outcome::Known:
        return "known";
    case Outcome::Part:
        return "part";
    case Outcome::NoImage:
        return "noImage";
    case Outcome::Refused:
        break;
    }
    return "refused";
}

Json json(const IngestedFile& file)
{
    Json line{{"path", file.path}, {"outcome", nameOf(file.outcome)}};
    if (file.recordId != 0) {
        line["kind"] = file.kind;
        line["id"] = file.recordId;
    }
    if (!file.reason.empty())
        line["reason"] = file.reason;
    return line;
}

Json json(const IngestReport& report, const std::string& project, double seconds)
{
    Json line{{"place", report.import.rootPath},
              {"disk", report.diskName},
              {"newDisk", report.import.diskIsNew},
              {"project", project},
              {"newProject", report.projectIsNew}};
    for (const Outcome outcome :
         {Outcome::Taken, Outcome::Known, Outcome::Part, Outcome::NoImage, Outcome::Refused}) {
        const auto count = report.counts.find(outcome);
        line[nameOf(outcome)] = count == report.counts.end() ? 0 : count->second;
    }
    for (const auto& [kind, count] : report.taken)
        if (count > 0)
            line["kinds"][kind] = count;
    line["problems"] = report.import.problems;
    line["seconds"] = std::round(seconds * 100) / 100;
    return line;
}

/// "12 images taken (dom 10, sat 2), 3 known, ..."
std::string countsText(IngestReport& report)
{
    std::string kinds;
    for (const auto& [kind, count] : report.taken)
        if (count > 0)
            kinds += (kinds.empty() ? " (" : ", ") + kind + " " + std::to_string(count);
    return counted(report.counts[Outcome::Taken], "image") + " taken" + kinds + (kinds.empty() ? "" : ")") +
           ", " + std::to_string(report.counts[Outcome::Known]) + " known; " +
           std::to_string(report.counts[Outcome::Refused]) +
           " refused; not images: " + counted(report.counts[Outcome::Part], "part") + " of images and " +
           counted(report.counts[Outcome::NoImage], "other file");
}

ExitCode ingest(const Arguments& arguments)
{
    const auto start = std::chrono::steady_clock::now();
    Store store(arguments.data);
    IngestOptions options = arguments.ingest;
    options.companyNo = arguments.companyNo;
    Progress progress("file", "files");
    options.progress = progress.function();
    const auto complain = [&progress](const std::string& text) {
        progress.clear();
        std::cerr << "lumo-centre: " + text + "\n";
    };
    options.problem = [&complain](const std::string& problem) { complain("not imported: " + problem); };
    std::uint64_t refused = 0;
    options.report = [&](const IngestedFile& file) {
        if (arguments.json)
            std::cout << json(file).dump() << "\n";
        else if (file.outcome == Outcome::Refused && ++refused <= kShownFiles)
            complain("refused: " + escaped(file.path) + ": " + file.reason);
    };
    IngestReport report = ingest(store, options);
    progress.clear();
    if (refused > kShownFiles)
        complain("and " + std::to_string(refused - kShownFiles) + " more refused: --json lists all");
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    if (arguments.json)
        std::cout << json(report, options.projectName, time.count()).dump() << "\n";
    else
        std::cout << "ingested " << escaped(report.import.rootPath) << " of "
                  << (report.import.diskIsNew ? "new disk " : "disk ") << report.diskName << " into "
                  << (report.projectIsNew ? "new project " : "project ") << options.projectName << ": "
                  << countsText(report) << "; " << counted(report.import.problems, "problem") << "; "
                  << std::fixed << std::setprecision(2) << time.count() << " s\n";
    return report.counts[Outcome::Refused] + report.import.problems == 0 ? ExitCode::Success
                                                                         : ExitCode::Incomplete;
}

} // namespace

void addIngest(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "ingest",
                "Register the images of a real folder, with what they say of themselves", ingest);
    IngestOptions& options = arguments.ingest;
    each->add_option("DIR", options.folder, "The folder")->type_name("")->required();
    each->add_option("--project", options.projectName, "The project of the records, made if it is missing")
        ->type_name("NAME")
        ->required();
    each->add_option(
            "--type", options.kind,
            "The kind of all records: photo, sat, ads, dem, dsm, dom, dlg; without it each image's own")
        ->type_name("KIND");
    each->add_option("--disk", options.diskName,
                     "The disk's name; without it that of the disk that holds the folder, or the folder's")
        ->type_name("NAME");
    each->add_option("--company", arguments.companyNo, "The number of the company that owns project and disk")
        ->type_name("NO")
        ->capture_default_str();
    each->add_option("--box", options.boxCode, "The code of the storage box that holds the disk")
        ->type_name("CODE");
    each->add_option("--processes", options.processes,
                     "How many images are read at once; without it as many as processors")
        ->check(CLI::Range(1, 256).description(""))
        ->type_name("N");
    each->add_flag("--json", arguments.json,
                   "Print a JSON object for each file that is not known, then the counts");
}

} // namespace centre
