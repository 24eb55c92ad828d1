#ifndef LUMO_TESTS_SUPPORT_METHODTABLE_H
#define LUMO_TESTS_SUPPORT_METHODTABLE_H

#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// How a method ends on each kind of answer, told in one word each.
struct Variant
{
    const char* failed;
    const char* minusTwo;
    const char* minusOne;
    bool minusOneIsNull; ///< the line says Result NULL, not Result Error
    bool fiveSucceeds;
    bool nested = false; ///< the verdict is the code of a status record
    bool terse = false;  ///< the line of a bad result says Error, not Result Error

    std::string verdict(int result) const
    {
        return nested ? "status { status_code: " + std::to_string(result) + " } "
                      : "result: " + std::to_string(result) + " ";
    }
};

/// A method of the manager, told by its one call.
struct Method
{
    const char* name;
    const char* loggedName;
    Variant variant;
    const char* call;    ///< operation and request
    const char* answer;  ///< beside the result
    const char* success; ///< outcome on success
    std::function<std::string(TestManager&)> invoke;

    std::string operation() const { return std::string(call).substr(0, std::string(call).find(' ')); }
};

/// Runs each method of a table through every kind of answer.
class MethodTable : public ::testing::Test
{
protected:
    typedef std::vector<std::string> Lines;

    void succeeds(const std::vector<Method>& methods)
    {
        for (const Method& method : methods) {
            m_Channel.answer(method.variant.verdict(0) + method.answer);
            check(method, method.success, {});
        }
    }

    void tellsOfAFailedCall(const std::vector<Method>& methods)
    {
        for (const Method& method : methods) {
            m_Channel.fail("100% gone: %s");
            check(method, method.variant.failed, {method.operation() + " Error : 100% gone: %s"});
        }
    }

    void judgesTheResult(const std::vector<Method>& methods)
    {
        for (const Method& method : methods) {
            const Lines error = {method.operation() + (method.variant.terse ? " Error" : " Result Error")};
            const Lines null = {method.operation() + " Result NULL"};
            const Variant& variant = method.variant;
            m_Channel.answer(variant.verdict(-2) + method.answer);
            check(method, variant.minusTwo, error);
            m_Channel.answer(variant.verdict(-1) + method.answer);
            check(method, variant.minusOne, variant.minusOneIsNull ? null : error);
            m_Channel.answer(variant.verdict(5) + method.answer);
            if (variant.fiveSucceeds)
                check(method, method.success, {});
            else
                check(method, variant.failed, error);
        }
    }

    /// Runs a method after the answers that the channel got, and checks what lies between Enter and Leave.
    void check(const Method& method, const std::string& outcome, const Lines& between)
    {
        SCOPED_TRACE(method.call);
        m_Log.clear();
        m_Channel.forgetCalls();
        EXPECT_EQ(method.invoke(m_Manager), outcome);
        EXPECT_EQ(m_Channel.calls(), Lines{method.call});
        EXPECT_EQ(m_Channel.timeouts().back(), 4321);
        Lines expected = {managerLine(std::string("Enter Function : ") + method.loggedName, method.name)};
        for (const std::string& message : between)
            expected.push_back(managerLine(message, method.name));
        expected.push_back(managerLine(std::string("Leave Function : ") + method.loggedName, method.name));
        EXPECT_EQ(m_Log.lines(), expected);
    }

    LogCapture m_Log;
    FakeChannel m_Channel;
    TestManager m_Manager{m_Channel};
};

#endif
