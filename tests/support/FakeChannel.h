#ifndef LUMO_TESTS_SUPPORT_FAKECHANNEL_H
#define LUMO_TESTS_SUPPORT_FAKECHANNEL_H

#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

/// A channel without a network: plays scripted answers in order and records what was asked.
class FakeChannel : public wirecall::RpcChannel
{
public:
    /// The next call is answered with this response, in protobuf's text format; with a leading '!' it fails
    /// with the error text that follows. A reason beside it comes first, as in "(why) result: -2".
    FakeChannel& answer(const std::string& text)
    {
        m_Answers.push_back(text);
        return *this;
    }

    /// The calls so far, each as "operation {request in one line}".
    const std::vector<std::string>& calls() const { return m_Calls; }
    const std::vector<long long>& timeouts() const { return m_Timeouts; }
    void forgetCalls() { m_Calls.clear(); }
    bool allPlayed() const { return m_Answers.empty(); }

    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override
    {
        EXPECT_EQ(done, nullptr);
        wirecall::RpcController& call = *static_cast<wirecall::RpcController*>(controller);
        EXPECT_FALSE(call.IsRequestSent()) << "a controller is reset between calls";
        m_Calls.push_back(textOf(*method, *request));
        m_Timeouts.push_back(call.timeout());
        if (m_Answers.empty())
            throw std::logic_error("unexpected call: " + m_Calls.back());
        const std::string next = m_Answers.front();
        m_Answers.pop_front();
        response->Clear();
        play(next, call, *response);
    }

    /// "operation {request in one line}", in UTF-8.
    static std::string textOf(const google::protobuf::MethodDescriptor& method,
                              const google::protobuf::Message& request)
    {
        google::protobuf::TextFormat::Printer printer;
        printer.SetSingleLineMode(true);
        printer.SetUseUtf8StringEscaping(true);
        std::string text;
        printer.PrintToString(request, &text);
        return method.name() + " {" + text.substr(0, text.find_last_not_of(' ') + 1) + "}";
    }

    /// Ends a call with such an answer.
    static void play(const std::string& text, wirecall::RpcController& call,
                     google::protobuf::Message& response)
    {
        call.setReason({});
        if (const std::size_t end = text.find(") "); text[0] == '(') {
            play(text.substr(end + 2), call, response);
            call.setReason(text.substr(1, end - 1));
        } else if (text[0] == '!')
            call.setOutcome(wirecall::Failure::Other, text.substr(1), text != "!unsent");
        else if (google::protobuf::TextFormat::ParseFromString(text, &response))
            call.setOutcome(wirecall::Failure::None, std::string(), true);
        else
            throw std::logic_error("not a " + response.GetTypeName() + ": " + text);
    }

private:
    std::deque<std::string> m_Answers;
    std::vector<std::string> m_Calls;
    std::vector<long long> m_Timeouts;
};

#endif
