#include "cli/Commands.h"

#include "cli/AssignmentText.h"
#include "cli/Connection.h"
#include "cli/Csv.h"
#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/Interrupt.h"
#include "cli/RegisterReport.h"

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
            // As in what lumo writes, an empty cell is a field that the record doesn't have.
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

/// All of the file is checked before anything is registered.
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

/// The whole text: a project belongs to the user's company unless it says otherwise.
QString textFor(const Session& session, ENUM_DATA_TYPE kind, const std::string& text)
{
    const bool told = ("," + text).find(",companyID='") != std::string::npos;
    const std::string company = kind == DATA_TYPE_DATA && !told
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

    /// A signal ends it with the batch under way, of which is told what became.
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

    /// Returns where it has come to.
    Records registerBatch(Records begin, Records end)
    {
        QStringList texts;
        for (auto record = begin; record != end; ++record)
            texts.append(textFor(m_Session, m_Kind, record->text));
        QList<unsigned int> ids;
        m_Session.journal.forget();
        if (!m_Session.manager.addImage(m_Kind, texts, ids)) {
            requireRefusal(begin, end);
            // All or none of a batch: each alone tells which ones it was.
            while (begin != end && NotedInterrupt::signal() == 0)
                registerOne(begin++);
            return begin;
        }
        if (ids.size() != texts.size()) {
            throw Failure(ExitCode::CentreFailed, "the centre told " + std::to_string(ids.size()) +
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

    /// Goes on only where nothing was registered: after a call without an answer nobody knows.
    void requireRefusal(Records begin, Records end) const
    {
        const Reason reason = m_Session.journal.lastReason();
        if (reason.kind == Reason::Kind::CallFailed) {
            throw Failure(ExitCode::CentreFailed,
                          "the centre failed the request: " + describe(reason) +
                              "; whether the last records were registered is not known" +
                              linesText(begin, end) + ", " + std::to_string(m_Report.registeredRecords()) +
                              " before them were");
        }
    }

    Session& m_Session;
    ENUM_DATA_TYPE m_Kind;
    RegisterReport& m_Report;
};

} // namespace

Action registerRecord(const std::string& kindWord, const std::vector<std::string>& assignments)
{
    const Kind& kind = kindNamed(kindWord);
    AssignmentText text;
    for (const std::string& assignment : assignments) {
        const std::size_t sign = assignment.find('=');
        if (sign == std::string::npos)
            refuse("'" + assignment + "' is no assignment: write KEY=VALUE, as in imageName=scene-1");
        text.add(assignment.substr(0, sign), assignment.substr(sign + 1));
    }
    return [&kind, text = text.text()](Session& session) {
        session.journal.forget();
        const unsigned int id = session.manager.addImage(kind.number, textFor(session, kind.number, text));
        const Reason reason = session.journal.lastReason();
        if (id == kNone && reason.kind == Reason::Kind::KeyMissing)
            refuse("a " + std::string(kind.word) + " needs more: " + describe(reason));
        if (id == kNone && reason.kind == Reason::Kind::ErrorResult)
            throw Failure(ExitCode::CentreFailed,
                          "the centre failed the request: " + describe(reason) + "; its log says why");
        if (id == kNone)
            requestFailed(session.journal);
        printIdentifier(session, id);
    };
}

Action registerFile(const std::string& kindWord, const std::string& path)
{
    const Kind& kind = kindNamed(kindWord);
    return [&kind, path, records = readRecords(path)](Session& session) {
        RegisterReport report(path, records.size(), session.json);
        FileRegistration(session, kind.number, report).run(records);
        if (report.failedRecords() > 0)
            throw Failure(ExitCode::TransferFailed, std::to_string(report.failedRecords()) + " of " +
                                                        std::to_string(records.size()) +
                                                        " records were not registered");
    };
}

} // namespace cli
