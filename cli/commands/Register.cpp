#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/ImageNames.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Csv.h"
#include "cli/output/Records.h"
#include "cli/progress/Interrupt.h"
#include "cli/progress/RegisterReport.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <set>

namespace cli {

namespace {

using lumo::Images;

constexpr std::size_t kBatch = 500;

/// A record of a file, ready to be sent.
struct NewRecord
{
    std::size_t line;
    Images::Fields fields;
};

std::string readWhole(const std::string& path)
{
    std::ifstream file = openedFile(path == "-" ? "/dev/stdin" : path, "'" + path + "'");
    return {std::istreambuf_iterator<char>(file), {}};
}

NewRecord recordOf(const std::vector<std::string>& names, const CsvRow& row, const std::string& path)
{
    NewRecord record{row.line, {}};
    for (std::size_t i = 0; i < names.size(); ++i) {
        // An empty cell is a field that the record does not have, as in the CSV that lumo writes.
        if (!row.cells[i].empty())
            record.fields.emplace_back(names[i], row.cells[i]);
    }
    try {
        Images::check(record.fields);
    } catch (const lumo::Error& error) {
        refuse(path + ":" + std::to_string(row.line) + ": " + error.what());
    }
    if (record.fields.empty())
        refuse(path + ":" + std::to_string(row.line) + ": the record is empty");
    return record;
}

/// Checks all of the file before anything is registered.
std::vector<NewRecord> readRecords(const std::string& path)
{
    const std::vector<CsvRow> rows = parseCsv(readWhole(path), path);
    if (rows.empty())
        refuse("'" + path + "' is empty: its first line has the names of fields, as in imageName,mainFileID");
    const std::vector<std::string>& names = rows.front().cells;
    std::set<std::string> known;
    for (const std::string& name : names) {
        Images::check(Images::Fields{{name, {}}});
        if (!known.insert(name).second)
            refuse(std::string(path).append(": two columns are named '").append(name).append("'"));
    }
    std::vector<NewRecord> records;
    records.reserve(rows.size() - 1);
    for (std::size_t i = 1; i < rows.size(); ++i)
        records.push_back(recordOf(names, rows[i], path));
    return records;
}

using Records = std::vector<NewRecord>::const_iterator;

/// Registers the records of a file, batch after batch.
class FileRegistration
{
public:
    FileRegistration(Images images, lumo::Record::Kind kind, RegisterReport& report)
        : m_Images(std::move(images)), m_Kind(kind), m_Report(report)
    {
    }

    /// A signal ends it after the batch under way, whose result is reported.
    void run(const std::vector<NewRecord>& records)
    {
        const Interrupt interrupt(
            Interrupt::Then::FinishWork); // without an event: a line may be half written
        auto begin = records.begin();
        while (begin != records.end() && Interrupt::signal() == 0) {
            const auto end = begin + std::min<std::ptrdiff_t>(kBatch, records.end() - begin);
            begin = registerBatch(begin, end);
            m_Report.refresh();
        }
        m_Report.finish(begin != records.end());
        if (begin != records.end()) {
            flushOutput();
            stop(records.begin(), begin);
        }
    }

private:
    [[noreturn]] void stop(Records begin, Records end) const
    {
        const std::string sent = begin == end
                                     ? "nothing was sent"
                                     : std::to_string(m_Report.registeredRecords()) + " registered, " +
                                           std::to_string(m_Report.failedRecords()) + " failed" +
                                           linesText(begin, end) + "; no later line was sent";
        throw Failure(Interrupt::signal() == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated,
                      "interrupted; " + sent);
    }

    /// Returns the first record that was not sent.
    Records registerBatch(Records begin, Records end)
    {
        std::vector<Images::Fields> batch;
        std::transform(begin, end, std::back_inserter(batch),
                       [](const NewRecord& one) { return one.fields; });
        std::vector<lumo::RecordId> ids;
        try {
            ids = m_Images.addAll(m_Kind, batch);
        } catch (const lumo::Error& error) {
            requireRefusal(error, begin, end);
            // The centre takes all or none of a batch: sent one by one, the records that fail show.
            while (begin != end && Interrupt::signal() == 0)
                registerOne(begin++);
            return begin;
        }
        for (const lumo::RecordId id : ids)
            m_Report.registered(begin++->line, id.number());
        return end;
    }

    void registerOne(Records record)
    {
        try {
            m_Report.registered(record->line, m_Images.add(m_Kind, record->fields).number());
        } catch (const lumo::Error& error) {
            requireRefusal(error, record, record + 1);
            m_Report.failed(record->line, error.reason());
        }
    }

    static std::string linesText(Records begin, Records end)
    {
        return " (lines " + std::to_string(begin->line) + " to " + std::to_string((end - 1)->line) + ")";
    }

    /// Returns only when nothing was registered; throws after a call without an answer, when this is unknown.
    void requireRefusal(const lumo::Error& error, Records begin, Records end) const
    {
        if (error.kind() == lumo::Error::Kind::Refused || error.kind() == lumo::Error::Kind::WrongUse)
            return;
        throw Failure(
            ExitCode::CentreFailed,
            error.what() +
                ("; it is not known whether the last records were registered" + linesText(begin, end)) +
                ", " + std::to_string(m_Report.registeredRecords()) + " before them were");
    }

    Images m_Images;
    lumo::Record::Kind m_Kind;
    RegisterReport& m_Report;
};

class RegisterCommand : public Command
{
public:
    explicit RegisterCommand(CLI::App& app)
    {
        addArgument(app, "KIND", m_KindWord, "The kind of the record");
        addOptionalArgument(app, "KEY=VALUE", m_Assignments,
                            "Its fields, as in typeID=2 mainFileID=33 imageName=scene-1");
        addOption(app, "--from", m_File, "FILE",
                  "Register the records of this CSV file, whose first line has the fields' names; - reads "
                  "standard input");
        explain(app, kKindHelp);
    }

    void check(Options& /*options*/) override
    {
        if (m_File.empty() == m_Assignments.empty())
            refuse("give either KEY=VALUE... or --from FILE");
        m_Kind = parseImageKind(m_KindWord);
        if (!m_File.empty())
            m_FileRecords = readRecords(m_File);
        for (const std::string& assignment : m_Assignments) {
            const std::size_t sign = assignment.find('=');
            if (sign == std::string::npos)
                refuse("'" + assignment + "' is not an assignment: write KEY=VALUE, as in imageName=scene-1");
            m_Fields.emplace_back(assignment.substr(0, sign), assignment.substr(sign + 1));
        }
        Images::check(m_Fields);
    }

    void run(lumo::Session& session, bool json) override
    {
        const Images images = session.images();
        if (m_File.empty())
            printIdentifier(images.add(m_Kind, m_Fields).number(), json);
        else
            registerFile(images, json);
    }

private:
    void registerFile(const Images& images, bool json) const
    {
        RegisterReport report(m_File, m_FileRecords.size(), json);
        FileRegistration(images, m_Kind, report).run(m_FileRecords);
        const std::size_t all = m_FileRecords.size();
        const std::size_t failed = report.failedRecords();
        if (failed > 0) {
            throw Failure(ExitCode::TransferFailed, std::to_string(failed) + " of " + std::to_string(all) +
                                                        (all == 1 ? " record" : " records") +
                                                        (failed == 1 ? " was" : " were") + " not registered");
        }
    }

    std::string m_KindWord;
    std::vector<std::string> m_Assignments;
    std::string m_File;
    lumo::Record::Kind m_Kind{};
    Images::Fields m_Fields; ///< of the record on the command line
    std::vector<NewRecord> m_FileRecords;
};

} // namespace

void addRegister(CommandSet& commands)
{
    commands.add<RegisterCommand>("register", "Register a record, or those of a CSV file");
}

} // namespace cli
