#include "cli/progress/ProgressView.h"

#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"
#include "cli/progress/ProgressLine.h"
#include "cli/progress/TreeTransfer.h"

#include <algorithm>
#include <iostream>

#include <unistd.h>

namespace cli {

namespace {

double secondsOf(const Transfer& transfer)
{
    return std::chrono::duration<double>(transfer.end - transfer.begin).count();
}

std::string namesOf(const Transfer& transfer)
{
    return transfer.source + " -> " + transfer.target;
}

std::string resultText(const Transfer& transfer)
{
    if (transfer.kept())
        return "kept, the file exists already (--overwrite replaces it)";
    const std::string counts = transfer.tree ? textOf(transfer.tree->result().counts) + ", " : "";
    return "done, " + counts +
           (transfer.bytes ? bytesText(static_cast<double>(*transfer.bytes)) + " in " : "") +
           durationText(secondsOf(transfer));
}

/// Prints a line: on standard output for what arrived, on standard error for what did not.
void printResult(const Transfer& transfer)
{
    if (transfer.phase == Transfer::Phase::Failed) {
        complain(namesOf(transfer) + ": " + transfer.failure);
        return;
    }
    print(escaped(namesOf(transfer) + ": " + resultText(transfer)) + "\n");
    flushOutput();
}

class EventView : public ProgressView
{
public:
    void began(const Transfer& transfer) override
    {
        write({{"event", "begin"},
               {"transfer", transfer.number},
               {"direction", transfer.get ? "get" : "put"},
               {"source", transfer.source},
               {"target", transfer.target},
               {"taskID", transfer.taskID}});
    }

    void advanced(const Transfer& transfer, const Totals&) override
    {
        write({{"event", "progress"}, {"transfer", transfer.number}, {"percent", transfer.percent}});
    }

    void fileFailed(const Transfer& transfer, const std::string& path, const std::string& reason) override
    {
        ProgressView::fileFailed(transfer, path, reason);
        write({{"event", "failed"}, {"transfer", transfer.number}, {"path", path}, {"message", reason}});
    }

    void ended(const Transfer& transfer) override
    {
        const bool failed = transfer.phase == Transfer::Phase::Failed;
        Json event = {{"event", "end"},
                      {"transfer", transfer.number},
                      {"source", transfer.source},
                      {"target", transfer.target},
                      {"result", failed            ? "failed"
                                 : transfer.kept() ? "kept"
                                                   : "done"}};
        if (failed) {
            event["code"] = transfer.code;
            event["message"] = transfer.failure;
            complain(namesOf(transfer) + ": " + transfer.failure);
        } else {
            event["bytes"] = transfer.bytes ? Json(*transfer.bytes) : Json(nullptr);
        }
        if (transfer.tree)
            addCounts(event, transfer.tree->result().counts);
        event["seconds"] = secondsOf(transfer);
        write(event);
    }

    void finished(const Totals& totals) override
    {
        std::size_t failed = 0;
        for (const Transfer& one : totals.transfers())
            failed += one.phase == Transfer::Phase::Failed ? 1 : 0;
        write({{"event", "finished"},
               {"arrived", totals.transfers().size() - failed},
               {"failed", failed},
               {"seconds", totals.seconds()}});
    }

private:
    static void addCounts(Json& event, const Counts& counts)
    {
        event["new"] = counts.added;
        event["changed"] = counts.changed;
        event["kept"] = counts.kept;
        event["skipped"] = counts.skipped;
        event["removed"] = counts.removed;
        event["failed"] = counts.failed;
    }

    static void write(const Json& event)
    {
        print(jsonLine(event));
        flushOutput();
    }
};

class LineView : public ProgressView
{
public:
    /// Prints a line for every tenth of a transfer that takes a while.
    void advanced(const Transfer& transfer, const Totals& totals) override
    {
        m_Shown.resize(totals.transfers().size());
        int& tenth = m_Shown[transfer.number - 1];
        if (transfer.percent / 10 <= tenth || transfer.percent == 100 || !takesAWhile(transfer))
            return;
        tenth = transfer.percent / 10;
        std::cerr << escaped(namesOf(transfer)) + ": " + std::to_string(transfer.percent) + " %\n";
    }

    void ended(const Transfer& transfer) override { printResult(transfer); }

private:
    /// Decides by the size or, where that is not known, by the time so far.
    static bool takesAWhile(const Transfer& transfer)
    {
        constexpr std::uint64_t kLarge = 8U << 20;
        return transfer.bytes ? *transfer.bytes >= kLarge
                              : Transfer::Clock::now() - transfer.begin >= std::chrono::seconds(1);
    }

    std::vector<int> m_Shown;
};

class BarView : public ProgressView
{
public:
    void fileFailed(const Transfer& transfer, const std::string& path, const std::string& reason) override
    {
        m_Line.clear();
        ProgressView::fileFailed(transfer, path, reason);
    }

    void ended(const Transfer& transfer) override
    {
        m_Line.clear();
        printResult(transfer);
    }

    void refresh(const Totals& totals) override
    {
        if (totals.ended() < totals.transfers().size())
            m_Line.show(lineOf(totals, progressColumns()));
    }

    void finished(const Totals& /*totals*/) override { m_Line.clear(); }

    std::chrono::milliseconds interval() const override { return std::chrono::milliseconds(100); }

private:
    /// The transfer that runs.
    static std::string headOf(const Totals& totals)
    {
        const auto& transfers = totals.transfers();
        const auto running = std::find_if(transfers.begin(), transfers.end(), [](const Transfer& one) {
            return one.phase == Transfer::Phase::Running;
        });
        std::string head = running == transfers.end() ? "" : escaped(running->source);
        if (transfers.size() > 1) {
            head.insert(0, std::to_string(totals.ended()) + " of " + std::to_string(transfers.size()) +
                               (head.empty() ? "" : "  "));
        }
        return head;
    }

    static std::string figuresOf(const Totals& totals)
    {
        const auto moved = totals.movedBytes();
        const auto all = totals.bytes();
        const auto rate = totals.bytesPerSecond();
        const auto left = totals.secondsLeft();
        std::string figures;
        if (moved)
            figures += "  " + bytesText(*moved) + (all ? " of " + bytesText(*all) : "");
        if (rate)
            figures += "  " + bytesText(*rate) + "/s";
        return figures + "  " + (left ? clockText(*left) + " left" : clockText(totals.seconds()));
    }

    static std::string lineOf(const Totals& totals, std::size_t width)
    {
        const std::string figures = figuresOf(totals);
        const std::string head = headOf(totals);
        if (const auto fraction = totals.fraction())
            return progressLine(head, *fraction, figures, width);
        const std::size_t rest = width - std::min(width, displayWidth(figures));
        return clipped(clipped(head, std::max(width / 3, rest)) + figures, width);
    }

    StatusLine m_Line;
};

} // namespace

void ProgressView::fileFailed(const Transfer& transfer, const std::string& path, const std::string& reason)
{
    complain(transfer.source + (path.empty() || transfer.source.back() == '/' ? "" : "/") + path + ": " +
             reason);
}

std::unique_ptr<ProgressView> ProgressView::make(bool json)
{
    if (json)
        return std::make_unique<EventView>();
    if (isatty(STDERR_FILENO) != 0)
        return std::make_unique<BarView>();
    return std::make_unique<LineView>();
}

} // namespace cli
