#ifndef LUMO_OPERATIONS_ASYNCCALL_H
#define LUMO_OPERATIONS_ASYNCCALL_H

#include "core/CallFrame.h"
#include "core/LogLine.h"
#include "forgeserver.pb.h"
#include "lumo/components/wirecall/Closures.h"
#include "lumo/components/wirecall/RpcController.h"

#include <memory>

/// The frame of every call of the data operations service whose answer comes by signal. The method writes
/// the Enter line and starts the call; its completion, on a thread of the RPC runtime, tells the outcome and
/// writes the Leave line. There is no time limit.
namespace asynccall {

/// Calls that have been started and have not ended: their closures point to the manager.
void countStart();
void countEnd();
/// The process ends: nothing of the application's or of Qt's is touched by an answer any more. True when no
/// call is outstanding; otherwise the manager must stay.
bool endAll();
bool reachesApplication();

/// UTF-8 text of an answer, as it stands in the log.
std::string logText(const std::string& text);

/// Starts a call and returns. `finished` gets a copy of `remembered` with the answer, and owns the
/// controller and the response.
template <class Request, class Response, class Remembered>
void start(wirecall::RpcChannel* channel, const Rpc<forgeserver::ForgeServices_Stub, Request, Response>& rpc,
           const Request& request,
           void (CLumoDataMgr::*finished)(wirecall::RpcController*, Remembered, Response*),
           Remembered remembered)
{
    using Closure = wirecall::MethodClosure_Bind3<true, CLumoDataMgr*, CLumoDataMgr, wirecall::RpcController*,
                                                  Remembered, Response*>;
    forgeserver::ForgeServices_Stub stub(channel);
    auto response = std::make_unique<Response>();
    auto controller = std::make_unique<wirecall::RpcController>();
    auto closure = std::make_unique<Closure>(CLumoDataMgr::GetSinglePton(), finished, controller.get(),
                                             remembered, response.get());
    countStart();
    (stub.*rpc.call)(controller.release(), &request, response.release(), closure.release());
}

/// A call that ends: frees its controller and response on every path, and counts its end.
template <class Response>
class Completion
{
public:
    /// `method` is the name in the log lines, `function` the one in the Func slot.
    Completion(const char* method, const char* function, wirecall::RpcController* controller,
               Response* response)
        : m_Method(method), m_Function(function), m_Controller(controller), m_Response(response)
    {
    }

    ~Completion() { countEnd(); }

    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;

    /// Whether there is an answer; if not, the end of the call is told.
    bool answered()
    {
        if (!m_Controller->IsRequestSent())
            error("cntl->IsRequestSent return false!");
        else if (m_Controller->Failed())
            error("cntl->Failed return true!");
        else
            return true;
        leave();
        return false;
    }

    const Response& response() const { return *m_Response; }

    void error(const char* text) { LUMO_LOG(m_Function, "%s Error : %s", m_Method, text); }

    void free()
    {
        m_Controller.reset();
        m_Response.reset();
    }

    void leave() { LUMO_LOG(m_Function, "Leave Function : %s", m_Method); }

    /// The whole end of a call with one verdict, which `succeeded` hears of when it is good.
    template <class Succeeded>
    void end(bool (Response::*verdict)() const, Succeeded succeeded)
    {
        if (!answered())
            return;
        const bool good = ((*m_Response).*verdict)();
        if (!good)
            error(m_Response->has_error_text() ? logText(m_Response->error_text()).c_str()
                                               : "No Error String");
        free();
        if (good && reachesApplication())
            succeeded();
        leave();
    }

private:
    const char* const m_Method;
    const char* const m_Function;
    std::unique_ptr<wirecall::RpcController> m_Controller;
    std::unique_ptr<Response> m_Response;
};

} // namespace asynccall

#endif
