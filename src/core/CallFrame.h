#ifndef LUMO_CORE_CALLFRAME_H
#define LUMO_CORE_CALLFRAME_H

#include "core/Readers.h"
#include "core/Rpc.h"
#include "core/Verdicts.h"
#include "ledgerserver.pb.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"
#include "lumo/core/LumoDataMgr.h"

#include <QList>

#include <string>

namespace Tavrel {
class TavrelServer_Stub;
}
namespace forgeserver {
class ForgeServices_Stub;
}

/// The frame of every synchronous remote method: the Enter line on construction; then one verb, which
/// calls, judges the answer, hands it on and writes the Leave line. A method opens its frame first.
///
/// Leave is written on each path by hand, so that an exception of a component passes through without one.
/// The frame copies what it needs of the manager, so once its request is made a call may outlast the
/// manager while the process ends.
class CallFrame
{
public:
    /// `method` is the name in the Func slot, `loggedName` the one in the Enter and Leave lines.
    CallFrame(const CLumoDataMgr& manager, const char* method);
    CallFrame(const CLumoDataMgr& manager, const char* method, const char* loggedName);
    /// A frame for the data operations service on a channel of the caller's, with a time limit of its own.
    CallFrame(const CLumoDataMgr& manager, const char* method, const char* loggedName,
              wirecall::RpcChannel* forgeChannel, unsigned int timeout);

    CallFrame(const CallFrame&) = delete;
    CallFrame& operator=(const CallFrame&) = delete;

    /// One call. `verdict` (Verdicts.h) judges the response, `read` takes it when it is a success. A call
    /// that fails is RET_FAILED or false.
    template <class Stub, class Request, class Response, class Verdict, class Read>
    typename Verdict::Outcome ask(const Rpc<Stub, Request, Response>& rpc, const Request& request,
                                  Verdict verdict, Read read)
    {
        Response response;
        const ENUM_RET_TYPE result = callAndJudge(rpc, request, response, verdict);
        if (result == RET_SUCCESS) {
            read(response);
            writeLeave();
        }
        return static_cast<typename Verdict::Outcome>(result);
    }

    /// A list in one call, which `append` adds to `records`. An answer that is not a success empties
    /// `records`, a call that fails leaves them.
    template <class Stub, class Request, class Response, class Record, class Append>
    ENUM_RET_TYPE list(const Rpc<Stub, Request, Response>& rpc, const Request& request,
                       QList<Record>& records, Append append)
    {
        Response response;
        if (!call(rpc, request, response))
            return RET_FAILED;
        const ENUM_RET_TYPE result = judge(rpc.name, verdicts::found(response), response.result());
        if (result == RET_SUCCESS) {
            append(response);
            writeLeave();
        } else {
            records.clear();
        }
        return result;
    }

    /// A list that may be long: its total, then pages. `append` adds a page to `records` and returns the
    /// number of its records. A page that fails empties `records`.
    template <class Stub, class Request, class Response, class Record, class Append>
    ENUM_RET_TYPE pages(const Rpc<Stub, Request, Response>& totalRpc,
                        const Rpc<Stub, Request, Response>& pageRpc, Request& request, QList<Record>& records,
                        Append append)
    {
        Response response;
        if (callAndJudge(totalRpc, request, response, verdicts::zero) != RET_SUCCESS)
            return RET_FAILED;
        m_Controller.Reset();
        const int total = response.total();
        request.set_page_size(kPageSize);
        for (int received = 0; received < total;) {
            request.set_page_start(received);
            ENUM_RET_TYPE result = callAndJudge(pageRpc, request, response, verdicts::found);
            int size = 0;
            if (result == RET_SUCCESS) {
                m_Controller.Reset();
                size = append(response);
                if (size == 0)
                    result = judge(pageRpc.name, Judgement::Error, 0); // asking again would never end
            }
            if (result != RET_SUCCESS) {
                records.clear();
                return result;
            }
            received += size;
        }
        writeLeave();
        return RET_SUCCESS;
    }

    /// Makes `loggedName` the name in the Leave line.
    void leaveAs(const char* loggedName) { m_LoggedName = loggedName; }

    /// Writes a log line, for a method that ends without a call.
    void write(const char* message);
    /// Ends such a method with `value`.
    template <class Value>
    Value leave(Value value)
    {
        writeLeave();
        return value;
    }

private:
    static constexpr int kPageSize = 10000;

    /// Calls and waits. False when the call failed; the RPC error and Leave lines are then written.
    template <class Stub, class Request, class Response>
    bool call(const Rpc<Stub, Request, Response>& rpc, const Request& request, Response& response)
    {
        Stub stub(channelOf(static_cast<Stub*>(nullptr)));
        m_Controller.SetTimeout(m_Timeout);
        (stub.*rpc.call)(&m_Controller, &request, &response, nullptr);
        return ended(rpc.name);
    }

    template <class Stub, class Request, class Response, class Verdict>
    ENUM_RET_TYPE callAndJudge(const Rpc<Stub, Request, Response>& rpc, const Request& request,
                               Response& response, Verdict verdict)
    {
        return call(rpc, request, response) ? judge(rpc.name, verdict(response), resultIn(response, 0))
                                            : RET_FAILED;
    }

    wirecall::RpcChannel* channelOf(ledgerserver::LedgerServices_Stub*) const { return m_LedgerChannel; }
    wirecall::RpcChannel* channelOf(Tavrel::TavrelServer_Stub*) const { return m_LedgerChannel; }
    wirecall::RpcChannel* channelOf(forgeserver::ForgeServices_Stub*) const { return m_ForgeChannel; }

    /// Whether the call that has returned did not fail; the lines of one that failed are then written.
    bool ended(const char* operation);
    /// The result in a response; 0 for one that has none.
    template <class Response>
    static auto resultIn(const Response& response, int /*preferred*/) -> decltype(int(response.result()))
    {
        return response.result();
    }
    template <class Response>
    static int resultIn(const Response& /*response*/, long /*otherwise*/)
    {
        return 0;
    }

    /// Writes the line of a bad answer and the Leave line, and notes the failure; nothing for a success.
    ENUM_RET_TYPE judge(const char* operation, Judgement judgement, int result);
    void writeLeave();

    const std::string m_Function;
    const char* m_LoggedName;
    const unsigned int m_Timeout;
    wirecall::RpcChannel* const m_LedgerChannel;
    wirecall::RpcChannel* const m_ForgeChannel;
    wirecall::RpcController m_Controller;
};

#endif
