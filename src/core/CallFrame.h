#ifndef LUMO_CORE_CALLFRAME_H
#define LUMO_CORE_CALLFRAME_H

#include "ledgerserver.pb.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/LumoDataMgr.h"

#include <QString>

#include <string>

namespace Tavrel {
class TavrelServer_Stub;
}
namespace forgeserver {
class ForgeServices_Stub;
}

/// An operation of a service: its name for the log and its member of the stub.
template <class Stub, class Request, class Response>
struct Rpc
{
    const char* name;
    void (Stub::*call)(google::protobuf::RpcController*, const Request*, Response*,
                       google::protobuf::Closure*);
};

template <class Stub, class Request, class Response>
Rpc(const char*, void (Stub::*)(google::protobuf::RpcController*, const Request*, Response*,
                                google::protobuf::Closure*)) -> Rpc<Stub, Request, Response>;

#define LEDGER(operation)                                                                                    \
    Rpc                                                                                                      \
    {                                                                                                        \
#operation, &ledgerserver::LedgerServices_Stub::operation                                            \
    }
#define TAVREL(operation)                                                                                    \
    Rpc                                                                                                      \
    {                                                                                                        \
#operation, &Tavrel::TavrelServer_Stub::operation                                                    \
    }
#define FORGE(operation)                                                                                     \
    Rpc                                                                                                      \
    {                                                                                                        \
#operation, &forgeserver::ForgeServices_Stub::operation                                              \
    }

/// The frame of every synchronous remote method: the Enter line on construction; then one verb, which
/// calls, judges the answer, hands it on and writes the Leave line. Leave is written on each path by
/// hand, so that an exception of a component passes through without one.
///
/// A `read` takes the response of a success, ahead of the Leave line.
///
/// The frame copies what it needs of the manager, so once its request is made a call may outlast the
/// manager while the process ends.
class CallFrame
{
public:
    /// `method` is the name in the Func slot, `loggedName` the one in the Enter and Leave lines.
    CallFrame(const CLumoDataMgr& manager, const char* method);
    CallFrame(const CLumoDataMgr& manager, const char* method, const char* loggedName);
    /// A frame about the data operations service on a channel of the caller's, with a limit of its own.
    CallFrame(const CLumoDataMgr& manager, const char* method, const char* loggedName,
              wirecall::RpcChannel* forgeChannel, unsigned int timeout);

    CallFrame(const CallFrame&) = delete;
    CallFrame& operator=(const CallFrame&) = delete;

    /// RET_SUCCESS unless the call failed or the result is -2 (RET_FAILED) or -1 (RET_NULL).
    template <class Stub, class Request, class Response, class Read>
    ENUM_RET_TYPE judged(const Rpc<Stub, Request, Response>& rpc, const Request& request, Read read)
    {
        Response response;
        const ENUM_RET_TYPE verdict = callAndJudge(rpc, request, response);
        if (verdict != RET_SUCCESS)
            return verdict;
        read(response);
        return leave(RET_SUCCESS);
    }

    /// True only for result 0.
    template <class Stub, class Request, class Response, class Read>
    bool accepted(const Rpc<Stub, Request, Response>& rpc, const Request& request, Read read)
    {
        Response response;
        if (!callAndAccept(rpc, request, response))
            return false;
        read(response);
        return leave(true);
    }

    template <class Stub, class Request, class Response>
    bool accepted(const Rpc<Stub, Request, Response>& rpc, const Request& request)
    {
        return accepted(rpc, request, [](const Response&) {});
    }

    /// The same where `read` says whether the response is complete; one that is not is a failure.
    template <class Stub, class Request, class Response, class Read>
    bool firstOf(const Rpc<Stub, Request, Response>& rpc, const Request& request, Read read)
    {
        Response response;
        if (!callAndAccept(rpc, request, response))
            return false;
        return read(response) ? leave(true) : refused(rpc.name) == RET_SUCCESS;
    }

    /// True for result 0, but the line of a bad result lacks the word Result.
    template <class Stub, class Request, class Response>
    bool acceptedTersely(const Rpc<Stub, Request, Response>& rpc, const Request& request)
    {
        Response response;
        if (!call(rpc, request, response))
            return false;
        return response.result() == 0 ? leave(true) : refusedTersely(rpc.name);
    }

    /// True only where the response's own `verdict` is.
    template <class Stub, class Request, class Response, class Read>
    bool confirmed(const Rpc<Stub, Request, Response>& rpc, const Request& request,
                   bool (Response::*verdict)() const, Read read)
    {
        Response response;
        if (!call(rpc, request, response))
            return false;
        if (!(response.*verdict)())
            return refused(rpc.name) == RET_SUCCESS;
        read(response);
        return leave(true);
    }

    /// True only for status code 0, the verdict of the planning service.
    template <class Stub, class Request, class Response, class Read>
    bool planned(const Rpc<Stub, Request, Response>& rpc, const Request& request, Read read)
    {
        Response response;
        if (!call(rpc, request, response))
            return false;
        if (response.status().status_code() != 0)
            return refused(rpc.name) == RET_SUCCESS;
        read(response);
        return leave(true);
    }

    /// True unless the call failed, for a response without a verdict.
    template <class Stub, class Request, class Response, class Read>
    bool answered(const Rpc<Stub, Request, Response>& rpc, const Request& request, Read read)
    {
        Response response;
        if (!call(rpc, request, response))
            return false;
        read(response);
        return leave(true);
    }

    /// A list in one call, which `append` takes. An answer that is no success empties `records`.
    template <class Stub, class Request, class Response, class Append, class Record>
    ENUM_RET_TYPE listOrNothing(const Rpc<Stub, Request, Response>& rpc, const Request& request,
                                Append append, QList<Record>& records)
    {
        Response response;
        if (!call(rpc, request, response))
            return RET_FAILED;
        const ENUM_RET_TYPE verdict = judge(rpc.name, response.result());
        if (verdict != RET_SUCCESS) {
            records.clear();
            return verdict;
        }
        append(response);
        return leave(RET_SUCCESS);
    }

    /// A list that may be long: its total, then pages. `append` takes a page and returns the number of its
    /// records. A page that fails empties `records`.
    template <class Stub, class Request, class Response, class Append, class Record>
    ENUM_RET_TYPE pages(const Rpc<Stub, Request, Response>& totalRpc,
                        const Rpc<Stub, Request, Response>& pageRpc, Request& request, Append append,
                        QList<Record>& records)
    {
        Response response;
        if (!callAndAccept(totalRpc, request, response))
            return RET_FAILED;
        m_Controller.Reset();
        const int total = response.total();
        request.set_page_size(kPageSize);
        for (int received = 0; received < total;) {
            request.set_page_start(received);
            ENUM_RET_TYPE verdict = callAndJudge(pageRpc, request, response);
            const int size = verdict == RET_SUCCESS ? append(response) : 0;
            if (verdict == RET_SUCCESS && size == 0)
                verdict = refused(pageRpc.name); // asking again would never end
            if (verdict != RET_SUCCESS) {
                records.clear();
                return verdict;
            }
            m_Controller.Reset();
            received += size;
        }
        return leave(RET_SUCCESS);
    }

    /// The identifier of the answer's bean; any other result than 0 is a failure, 0xFFFFFFFF.
    template <class Stub, class Request, class Response>
    unsigned int identifier(const Rpc<Stub, Request, Response>& rpc, const Request& request)
    {
        unsigned int id = kNoIdentifier;
        accepted(rpc, request, [&](const Response& response) { id = response.bean().id(); });
        return id;
    }

    /// The identifier of the answer itself, in the same way.
    template <class Stub, class Request, class Response>
    unsigned int ownIdentifier(const Rpc<Stub, Request, Response>& rpc, const Request& request)
    {
        unsigned int id = kNoIdentifier;
        accepted(rpc, request, [&](const Response& response) { id = response.id(); });
        return id;
    }

    /// As `identifier`, where only the results -1 and -2 are failures.
    template <class Stub, class Request, class Response>
    unsigned int lookedUpIdentifier(const Rpc<Stub, Request, Response>& rpc, const Request& request)
    {
        unsigned int id = kNoIdentifier;
        judged(rpc, request, [&](const Response& response) { id = response.bean().id(); });
        return id;
    }

    /// A path and the code of the storage box that it lies on.
    template <class Stub, class Request, class Response>
    QString fullPath(const Rpc<Stub, Request, Response>& rpc, const Request& request, QString& kestaCode)
    {
        QString path;
        accepted(rpc, request, [&](const Response& response) {
            path = QString::fromStdString(response.full_path());
            kestaCode = QString::fromStdString(response.kesta_code());
        });
        return path;
    }

    /// The Leave line will bear this name.
    void leaveAs(const char* loggedName) { m_LoggedName = loggedName; }

    /// For a method that ends without a call: a log line, and the end with a value.
    void write(const char* message);
    template <class Value>
    Value leave(Value value)
    {
        writeLeave();
        return value;
    }

private:
    static constexpr int kPageSize = 10000;

    /// Calls and waits. False when the call failed; the RPC error and Leave lines are written then.
    template <class Stub, class Request, class Response>
    bool call(const Rpc<Stub, Request, Response>& rpc, const Request& request, Response& response)
    {
        Stub stub(channelOf(static_cast<Stub*>(nullptr)));
        m_Controller.SetTimeout(m_Timeout);
        (stub.*rpc.call)(&m_Controller, &request, &response, nullptr);
        return !m_Controller.Failed() || failed(rpc.name);
    }

    template <class Stub, class Request, class Response>
    ENUM_RET_TYPE callAndJudge(const Rpc<Stub, Request, Response>& rpc, const Request& request,
                               Response& response)
    {
        return call(rpc, request, response) ? judge(rpc.name, response.result()) : RET_FAILED;
    }

    template <class Stub, class Request, class Response>
    bool callAndAccept(const Rpc<Stub, Request, Response>& rpc, const Request& request, Response& response)
    {
        return call(rpc, request, response) && (response.result() == 0 || refused(rpc.name) == RET_SUCCESS);
    }

    wirecall::RpcChannel* channelOf(ledgerserver::LedgerServices_Stub*) const { return m_LedgerChannel; }
    wirecall::RpcChannel* channelOf(Tavrel::TavrelServer_Stub*) const { return m_LedgerChannel; }
    wirecall::RpcChannel* channelOf(forgeserver::ForgeServices_Stub*) const { return m_ForgeChannel; }

    bool failed(const char* operation);
    ENUM_RET_TYPE refused(const char* operation);
    bool refusedTersely(const char* operation);
    ENUM_RET_TYPE judge(const char* operation, int result);
    void writeLeave();

    const std::string m_Function;
    const char* m_LoggedName;
    const unsigned int m_Timeout;
    wirecall::RpcChannel* const m_LedgerChannel;
    wirecall::RpcChannel* const m_ForgeChannel;
    wirecall::RpcController m_Controller;
};

#endif
