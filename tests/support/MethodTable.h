#ifndef LUMO_TESTS_SUPPORT_METHODTABLE_H
#define LUMO_TESTS_SUPPORT_METHODTABLE_H

#include "tests/support/LogCapture.h"
#include "tests/support/OutcomeText.h"
#include "tests/support/TestManager.h"

#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

/// How a method judges an answer.
enum class Verdict
{
    judged,          ///< result -2 is a failure, -1 is null, any other a success
    judgedOrEmpty,   ///< the same; a result that is no success empties the list
    accepted,        ///< result 0 alone is a success
    acceptedTersely, ///< the same; the line of another one is shorter
    planned,         ///< the code of the status, 0 or absent, is a success
    confirmed,       ///< the first flag of the answer is true
    pages,           ///< the count is accepted, then each page judged
};

/// A call of a method as a test makes it, with out-parameters of the test's own, and its outcomes
/// (OutcomeText.h).
struct Call
{
    std::function<std::string(TestManager&)> run;
    std::string failed, null;  ///< outcomes of failures, with the out-parameters untouched
    std::string emptied, none; ///< the same, with an empty list
};

/// A call with out-parameters of these types.
template <class... Outs, class Run>
Call on(Run run)
{
    using Result = std::decay_t<decltype(run(std::declval<TestManager&>(), std::declval<Outs&>()...))>;
    const auto textOf = [](const Result& result, const Outs&... outs) {
        return (text(result) + ... + (" " + text(outs)));
    };
    std::tuple<Outs...> kept;
    std::apply([](Outs&... outs) { (mark(outs), ...); }, kept);
    Result failure{}, null{};
    if constexpr (std::is_same_v<Result, unsigned int>)
        failure = null = 0xFFFFFFFF;
    if constexpr (std::is_same_v<Result, ENUM_RET_TYPE>)
        null = RET_NULL;
    return {[=](TestManager& manager) {
                std::tuple<Outs...> values = kept;
                return std::apply(
                    [&](Outs&... outs) {
                        const Result result = run(manager, outs...);
                        return textOf(result, outs...);
                    },
                    values);
            },
            std::apply([&](const Outs&... outs) { return textOf(failure, outs...); }, kept),
            std::apply([&](const Outs&... outs) { return textOf(null, outs...); }, kept), text(failure) + " ",
            text(null) + " "};
}

/// A method of the manager, described by the one operation that it calls.
struct Method
{
    std::string name;
    Verdict verdict;
    std::string asked;   ///< operation and request; $ is where a request for a page has its place
    std::string answer;  ///< beside the verdict; of pages a record, with $ for its key
    std::string outcome; ///< on success; of pages what precedes the key of a record
    Call call;
    std::string logged = name; ///< the name in the Enter and Leave lines

    std::string operation() const { return asked.substr(0, asked.find(' ')); }
};

template <class... Outs, class Run>
Method method(const std::string& name, Verdict verdict, const std::string& asked, const std::string& answer,
              const std::string& outcome, Run run)
{
    return {name, verdict, asked, answer, outcome, on<Outs...>(run)};
}

/// `text` with `value` for each $.
inline std::string filled(std::string text, const std::string& value)
{
    for (std::size_t at; (at = text.find('$')) != std::string::npos;)
        text.replace(at, 1, value);
    return text;
}

/// The calls of a table by their names: a method's, with "(...)" after it where several have that name.
using Calls = std::map<std::string, Call>;

/// The methods of a table in a file, a line each, "#" before a comment:
///     NAME [as NAME IN THE LOG] VERDICT OPERATION {REQUEST} -> ANSWER -> OUTCOME
inline std::vector<Method> methodsIn(const std::string& file, Calls calls)
{
    static const std::map<std::string, Verdict> verdicts = {
        {"judged", Verdict::judged},     {"judgedOrEmpty", Verdict::judgedOrEmpty},
        {"accepted", Verdict::accepted}, {"acceptedTersely", Verdict::acceptedTersely},
        {"planned", Verdict::planned},   {"confirmed", Verdict::confirmed},
        {"pages", Verdict::pages}};
    static const std::regex form("((\\w+)\\S*)(?: as (\\w+))? (\\w+) (\\w+ \\{.*\\}) -> (.*?) ?-> ?(.*)");
    std::vector<Method> methods;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (line.empty() || line[0] == '#')
            continue;
        if (!std::regex_match(line, match, form) || !calls.count(match[1]) || !verdicts.count(match[4])) {
            ADD_FAILURE() << file << " has a line that no call belongs to: " << line;
            continue;
        }
        methods.push_back({match[2], verdicts.at(match[4]), match[5], match[6], match[7],
                           calls.extract(match[1]).mapped(), match[3].matched ? match[3] : match[2]});
    }
    EXPECT_TRUE(calls.empty()) << file << " has no line for " << (calls.empty() ? "" : calls.begin()->first);
    return methods;
}

/// Runs the methods of a table through every kind of answer.
class MethodTable : public ::testing::Test
{
protected:
    typedef std::vector<std::string> Lines;

    void run(const std::vector<Method>& methods)
    {
        for (const Method& method : methods) {
            if (method.verdict == Verdict::pages)
                runPages(method);
            else
                runSingle(method);
            SCOPED_TRACE(method.asked + " without a channel");
            m_Log.clear();
            EXPECT_THROW(method.call.run(m_Manager), std::logic_error);
            EXPECT_EQ(m_Log.lines(), Lines{managerLine("Enter Function : " + method.logged, method.name)})
                << "an exception of a component passes without a Leave line";
        }
    }

    /// Calls a method that gets these answers, and checks the calls and the lines between Enter and Leave.
    void check(const Method& method, const Lines& answers, const std::string& outcome,
               const std::string& between = {})
    {
        SCOPED_TRACE(method.name + " on " + (answers.empty() ? "nothing" : answers.back()));
        m_Log.clear();
        m_Channel.forgetCalls();
        for (const std::string& answer : answers)
            m_Channel.answer(answer);
        EXPECT_EQ(method.call.run(m_Manager), outcome);
        EXPECT_TRUE(m_Channel.allPlayed());
        Lines calls;
        for (std::size_t i = 0; i < answers.size(); ++i)
            calls.push_back(method.verdict == Verdict::pages ? pageCall(method, i) : method.asked);
        EXPECT_EQ(m_Channel.calls(), calls);
        for (const long long timeout : m_Channel.timeouts())
            EXPECT_EQ(timeout, 4321);
        EXPECT_EQ(m_Log.lines(),
                  framedLines(method.name, method.logged, between.empty() ? Lines() : Lines{between}));
    }

    LogCapture m_Log;
    FakeChannel m_Channel;
    TestManager m_Manager{m_Channel};

private:
    void runSingle(const Method& method)
    {
        const std::string operation = method.operation();
        const std::string error =
            operation + (method.verdict == Verdict::acceptedTersely ? " Error" : " Result Error");
        const auto succeeds = [&](const std::string& verdict) {
            check(method, {verdict + method.answer}, method.outcome);
        };
        const auto fails = [&](const std::string& verdict) {
            check(method, {verdict + method.answer}, method.call.failed, error);
        };
        check(method, {"!100% gone: %s"}, method.call.failed, operation + " Error : 100% gone: %s");
        switch (method.verdict) {
        case Verdict::confirmed: {
            const std::string flag = operation == "AdsFromSup" ? "ads_result: " : "sat_result: ";
            succeeds(flag + "true ");
            fails(flag + "false ");
            fails("");
            break;
        }
        case Verdict::judged:
        case Verdict::judgedOrEmpty: {
            const bool empties = method.verdict == Verdict::judgedOrEmpty;
            for (const char* verdict : {"", "result: 0 ", "result: 5 "})
                succeeds(verdict);
            check(method, {"result: -2 " + method.answer}, empties ? method.call.emptied : method.call.failed,
                  error);
            check(method, {"result: -1 " + method.answer}, empties ? method.call.none : method.call.null,
                  operation + " Result NULL");
            break;
        }
        default:
            const bool planned = method.verdict == Verdict::planned;
            const std::string head = planned ? "status { status_code: " : "result: ",
                              tail = planned ? " } " : " ";
            succeeds("");
            succeeds(head + "0" + tail);
            for (const char* code : {"-2", "-1", "5"})
                fails(head + code + tail);
        }
    }

    void runPages(const Method& method)
    {
        const auto page = [&](int first, int last) {
            std::string records;
            for (int key = first; key <= last; ++key)
                records += filled(method.answer, std::to_string(key)) + " ";
            return records;
        };
        std::string all = "ok kept";
        for (const char* key : {"1", "2", "3", "4"})
            all += " " + method.outcome + key;
        const std::string operation = method.operation();
        const std::string kept = "ok kept";
        check(method, {"result: 0 total: 3", page(1, 2), "result: 5 " + page(3, 4)},
              all); // past the total too
        check(method, {"total: 0"}, kept);
        check(method, {"total: -3"}, kept);
        check(method, {"!gone"}, method.call.failed, totalOf(operation) + " Error : gone");
        for (const char* result : {"-2", "-1", "5"})
            check(method, {std::string("total: 5 result: ") + result}, method.call.failed,
                  totalOf(operation) + " Result Error");
        check(method, {"total: 2", "!gone"}, method.call.emptied, operation + " Error : gone");
        check(method, {"total: 3", page(1, 2), "!gone"}, method.call.emptied, operation + " Error : gone");
        check(method, {"total: 3", page(1, 2), "result: -2 " + page(3, 3)}, method.call.emptied,
              operation + " Result Error");
        check(method, {"total: 3", page(1, 2), "result: -1"}, method.call.none, operation + " Result NULL");
        check(method, {"total: 3", page(1, 2), "result: 0"}, method.call.emptied,
              operation + " Result Error");
    }

    /// The count for call 0, then the pages from record 0 and from record 2.
    static std::string pageCall(const Method& method, std::size_t number)
    {
        if (number > 0)
            return filled(method.asked,
                          "page_start: " + std::string(number == 1 ? "0" : "2") + " page_size: 10000");
        std::string call = method.asked;
        const std::size_t at = call.find('$');
        call.erase(call[at - 1] == ' ' ? at - 1 : at, 2);
        return totalOf(method.operation()) + call.substr(call.find(' '));
    }

    static std::string totalOf(const std::string& operation)
    {
        return operation.substr(0, operation.find("ForPage")) + "Total";
    }
};

#endif
