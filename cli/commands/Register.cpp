#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/commands/AssignmentText.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Csv.h"
#include "cli/output/Records.h"
#include "cli/progress/Interrupt.h"
#include "cli/progress/RegisterReport.h"

#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace cli {

namespace {

constexpr std::size_t kBatch = 500;

/// A record of a file, ready to be sent.
struct NewRecord
{
    std::size_t line;
    std::string text;
};

std::string readWhole(const std::string& path)
{
    std::ifstream file(path == "-" ? "/dev/stdin" : path, std::ios::binary);
    if (!file)
        refuse("can't read '" + path + "': " + std::strerror(errno));
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        refuse("can't read '" + path + "': it is a folder");
    return {std::istreambuf_iterator<char>(file), {}};
}

NewRecord recordOf(const std::vector<std::string>& names, const CsvRow& row, const std::string& path)
{
    AssignmentText text;
    try {
        for (std::size_t i = 0; i < names.size(); ++i) {
            // An empty cell is a field that the record does not have, as in the CSV that lumo writes.
            if (!row.cells[i].empty())
                text.add(names[i], row.cells[i]);
        }
    } catch (const Failure& failure) {
        refuse(path + ":" + std::to_string(row.line) + ": " + failure.what());
    }
    if (text.text().empty())
        refuse(path + ":" + std::to_string(row.line) + ": the record is empty");
    return {row.line, text.text()};
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
        AssignmentText().add(name, {});
        if (!known.insert(name).second) {
            std::string message = path;
            message += ": two columns are named " + name;
            refuse(message);
        }
    }
    std::vector<NewRecord> records;
    records.reserve(rows.size() - 1);
    for (std::size_t i = 1; i < rows.size(); ++i)
        records.push_back(recordOf(names, rows[i], path));
    return records;
}

/// The whole text. A project belongs to the user's company unless the text names another.
QString textFor(const Session& session, ENUM_DATA_TYPE kind, const std::string& text)
{
    const bool given = ("," + text).find(",companyID='") != std::string::npos;
    const std::string company = kind == DATA_TYPE_DATA && !given
                                    ? ",companyID='" + std::to_string(session.manager.companyID()) + "'"
                                    : std::string();
    return QString::fromStdString(text + company);
}

using Records = std::vector<NewRecord>::const_iterator;

/// Registers the records of a file, batch after batch.
class FileRegistration
{
public:
    FileRegistration(Session& session, ENUM_DATA_TYPE kind, RegisterReport& report)
        : m_Session(session), m_Kind(kind), m_Report(report)
    {
    }

    /// A signal ends it after the batch under way, whose result is reported.
    void run(const std::vector<NewRecord>& records)
    {
        const NotedInterrupt interrupt;
        auto begin = records.begin();
        while (begin != records.end() && NotedInterrupt::signal() == 0) {
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
        throw Failure(NotedInterrupt::signal() == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated,
                      "interrupted; " +
                          (begin == end ? "nothing was sent"
                                        : std::to_string(m_Report.registeredRecords()) + " registered, " +
                                              std::to_string(m_Report.failedRecords()) + " failed" +
                                              linesText(begin, end) + "; no later line was sent"));
    }

    /// Returns the first record that was not sent.
    Records registerBatch(Records begin, Records end)
    {
        QStringList texts;
        for (auto record = begin; record != end; ++record)
            texts.append(textFor(m_Session, m_Kind, record->text));
        QList<unsigned int> ids;
        m_Session.journal.forget();
        if (!m_Session.manager.addImage(m_Kind, texts, ids)) {
            requireRefusal(begin, end);
            // The centre takes all or none of a batch: sent one by one, the records that fail show.
            while (begin != end && NotedInterrupt::signal() == 0)
                registerOne(begin++);
            return begin;
        }
        if (ids.size() != texts.size()) {
            throw Failure(ExitCode::CentreFailed, "the centre returned " + std::to_string(ids.size()) +
                                                      " identifiers for " + std::to_string(texts.size()) +
                                                      " records" + linesText(begin, end));
        }
        for (auto record = begin; record != end; ++record)
            m_Report.registered(record->line, ids[static_cast<int>(record - begin)]);
        return end;
    }

    void registerOne(Records record)
    {
        m_Session.journal.forget();
        const unsigned int id = m_Session.manager.addImage(m_Kind, textFor(m_Session, m_Kind, record->text));
        if (id != kNone) {
            m_Report.registered(record->line, id);
            return;
        }
        requireRefusal(record, record + 1);
        m_Report.failed(record->line, describe(m_Session.journal.lastReason()));
    }

    static std::string linesText(Records begin, Records end)
    {
        return " (lines " + std::to_string(begin->line) + " to " + std::to_string((end - 1)->line) + ")";
    }

    /// Returns only when nothing was registered; throws after a call without an answer, when this is unknown.
    void requireRefusal(Records begin, Records end) const
    {
        const Reason reason = m_Session.journal.lastReason();
        if (reason.kind == Reason::Kind::CallFailed) {
            throw Failure(ExitCode::CentreFailed,
                          "the centre failed the request: " + describe(reason) +
                              "; it is not known whether the last records were registered" +
                              linesText(begin, end) + ", " + std::to_string(m_Report.registeredRecords()) +
                              " before them were");
        }
    }

    Session& m_Session;
    ENUM_DATA_TYPE m_Kind;
    RegisterReport& m_Report;
};

class RegisterCommand : public Command
{
public:
    explicit RegisterCommand(CLI::App& app)
    {
        addArgument(app, "KIND", m_KindWord, "The kind of the record");
        app.add_option("KEY=VALUE", m_Assignments,
                       "Its fields, as in typeID=2 mainFileID=33 imageName=scene-1")
            ->option_text(" ");
        app.add_option("--from", m_File,
                       "Register the records of this CSV file, whose first line has the fields' names; - "
                       "reads standard input")
            ->option_text("FILE");
        explain(app, kKindHelp);
    }

    void check(Options& /*options*/) override
    {
        if (m_File.empty() == m_Assignments.empty())
            refuse("register takes either KEY=VALUE... or --from FILE");
        m_Kind = &kindNamed(m_KindWord);
        if (!m_File.empty())
            m_FileRecords = readRecords(m_File);
        for (const std::string& assignment : m_Assignments) {
            const std::size_t sign = assignment.find('=');
            if (sign == std::string::npos)
                refuse("'" + assignment + "' is not an assignment: write KEY=VALUE, as in imageName=scene-1");
            m_Text.add(assignment.substr(0, sign), assignment.substr(sign + 1));
        }
    }

    void run(Session& session) override
    {
        if (m_File.empty())
            registerOne(session);
        else
            registerFile(session);
    }

private:
    void registerOne(Session& session) const
    {
        session.journal.forget();
        const unsigned int id =
            session.manager.addImage(m_Kind->number, textFor(session, m_Kind->number, m_Text.text()));
        const Reason reason = session.journal.lastReason();
        if (id == kNone && reason.kind == Reason::Kind::KeyMissing)
            refuse("a record of kind " + m_KindWord + " needs more: " + describe(reason));
        if (id == kNone && reason.kind == Reason::Kind::ErrorResult) {
            throw Failure(ExitCode::CentreFailed,
                          "the centre failed the request: " + describe(reason) + "; its log says why");
        }
        if (id == kNone)
            requestFailed(session.journal);
        printIdentifier(id, session.json);
    }

    void registerFile(Session& session) const
    {
        RegisterReport report(m_File, m_FileRecords.size(), session.json);
        FileRegistration(session, m_Kind->number, report).run(m_FileRecords);
        if (report.failedRecords() > 0) {
            throw Failure(ExitCode::TransferFailed, std::to_string(report.failedRecords()) + " of " +
                                                        std::to_string(m_FileRecords.size()) +
                                                        " records were not registered");
        }
    }

    std::string m_KindWord;
    std::vector<std::string> m_Assignments;
    std::string m_File;
    const Kind* m_Kind = nullptr;
    AssignmentText m_Text;
    std::vector<NewRecord> m_FileRecords;
};

} // namespace

void addRegister(CommandSet& commands)
{
    commands.add<RegisterCommand>("register", "Register a record, or those of a CSV file");
}

} // namespace cli
