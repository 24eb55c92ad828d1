#include "centre/endpoint/FaultyService.h"

#include "centre/base/Error.h"
#include "centre/store/Query.h"

#include <google/protobuf/message.h>

#include <algorithm>
#include <iterator>
#include <unistd.h>

namespace centre {

namespace {

using google::protobuf::Message;
using google::protobuf::MethodDescriptor;
using google::protobuf::ServiceDescriptor;

constexpr int kKilled = 137;
constexpr const char* kDataMovers[] = {"haulbox.BoxServices.open", "haulbox.BoxServices.fetch",
                                       "haulbox.BoxServices.read", "haulbox.BoxServices.write",
                                       "haulbox.BoxServices.store"};

const MethodDescriptor& findOperation(const std::vector<const ServiceDescriptor*>& services,
                                      const std::string& name)
{
    for (const ServiceDescriptor* service : services)
        if (const MethodDescriptor* method = service->FindMethodByName(name))
            return *method;
    std::string names;
    for (const ServiceDescriptor* service : services)
        names += (names.empty() ? "" : ", ") + service->full_name();
    throw Error(ExitCode::WrongUse,
                "there is no operation " + name + " that could fail; the services here are " + names);
}

bool movesData(const MethodDescriptor& method)
{
    return std::find(std::begin(kDataMovers), std::end(kDataMovers), method.full_name()) !=
           std::end(kDataMovers);
}

} // namespace

void FaultyService::CallMethod(const MethodDescriptor* method, google::protobuf::RpcController* controller,
                               const Message* request, Message* response, google::protobuf::Closure* done)
{
    const bool isStream = method->client_streaming() || method->server_streaming();
    const std::optional<Fault> fault = isStream ? std::nullopt : m_Faults.fires(method->name());
    if (!fault)
        return m_Service.CallMethod(method, controller, request, response, done);
    if (fault->kind == Fault::Kind::Stall)
        return controller->NotifyOnCancel(done); // the caller has gone, or the server stops
    if (fault->kind == Fault::Kind::Exit)
        exitAsIfKilled();
    if (fault->kind == Fault::Kind::Refuse)
        controller->SetFailed("refused by a fault switch");
    else
        setResult(*response, fault->result);
    done->Run();
}

void exitAsIfKilled()
{
    ::_exit(kKilled);
}

void addFaults(Faults& faults, const std::vector<std::string>& texts,
               const std::vector<const ServiceDescriptor*>& services)
{
    for (const std::string& text : texts) {
        const Faults::Added added = faults.add(text);
        const MethodDescriptor& method = findOperation(services, added.operation);
        if (added.fault.kind == Fault::Kind::Result && !method.output_type()->FindFieldByName("result"))
            throw Error(ExitCode::WrongUse,
                        added.operation +
                            " has no result that a fault could set; it can stall, exit or refuse");
        if (isOnData(added.fault) && !movesData(method))
            throw Error(ExitCode::WrongUse, added.operation +
                                                " moves no data; only open, fetch, read, write and store"
                                                " of a storage box do");
    }
}

} // namespace centre
