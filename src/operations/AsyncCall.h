#ifndef LUMO_OPERATIONS_ASYNCCALL_H
#define LUMO_OPERATIONS_ASYNCCALL_H

#include "core/LogLine.h"
#include "core/OutstandingCall.h"
#include "core/Rpc.h"
#include "forgeserver.pb.h"
#include "lumo/components/wirecall/Closures.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"
#include "lumo/core/LumoDataMgr.h"

#include <memory>
#include <string>
#include <utility>

/// The frame of every call of the data operations service whose answer comes by signal. The method writes
/// the Enter line and starts the call; its completion, on a thread of the RPC runtime, logs the outcome,
/// raises the signal and writes the Leave line. There is no time limit.
namespace asynccall {

/// Returns UTF-8 text of an answer as it is logged.
std::string logText(const std::string& text);

/// The closure of a call, which is outstanding until its closure is gone.
template <class Remembered, class Response>
class CallClosure final
    : public wirecall::MethodClosure_Bind3<true, CLumoDataMgr*, CLumoDataMgr, wirecall::RpcController*,
                                           Remembered, Response*>
{
public:
    using Base = wirecall::MethodClosure_Bind3<true, CLumoDataMgr*, CLumoDataMgr, wirecall::RpcController*,
                                               Remembered, Response*>;

    CallClosure(std::shared_ptr<const OutstandingCall> call, typename Base::Method finished,
                wirecall::RpcController* controller, Remembered remembered, Response* response)
        : Base(CLumoDataMgr::GetSinglePton(), finished, controller, remembered, response),
          m_Call(std::move(call))
    {
    }

private:
    std::shared_ptr<const OutstandingCall> m_Call;
};

/// Starts a call and returns. `finished` gets a copy of `remembered` with the answer, and owns the
/// controller and the response. Passes on what the channel throws.
template <class Request, class Response, class Remembered>
void start(wirecall::RpcChannel* channel, const Rpc<forgeserver::ForgeServices_Stub, Request, Response>& rpc,
           const Request& request,
           void (CLumoDataMgr::*finished)(wirecall::RpcController*, Remembered, Response*),
           Remembered remembered)
{
    forgeserver::ForgeServices_Stub stub(channel);
    auto response = std::make_unique<Response>();
    auto controller = std::make_unique<wirecall::RpcController>();
    const auto call = std::make_shared<const OutstandingCall>();
    auto closure = std::make_unique<CallClosure<Remembered, Response>>(call, finished, controller.get(),
                                                                       remembered, response.get());
    const auto giveAway = [&] {
        static_cast<void>(controller.release());
        static_cast<void>(response.release());
        static_cast<void>(closure.release());
    };
    try {
        (stub.*rpc.call)(controller.get(), &request, response.get(), closure.get());
    } catch (...) {
        if (call.use_count() == 1) // the closure ran before the channel threw, and freed all three
            giveAway();
        throw;
    }
    giveAway();
}

/// A call that ends: frees its controller and response on every path.
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

    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;

    /// Returns whether there is an answer. If not, the end of the call is logged.
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

    /// The whole end of a call with one verdict: `succeeded` is called when it is good.
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
        if (good && OutstandingCall::answersReachApplication())
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
