#ifndef LUMO_CENTRE_ENDPOINT_FAULTYSERVICE_H
#define LUMO_CENTRE_ENDPOINT_FAULTYSERVICE_H

#include "centre/endpoint/Faults.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/service.h>

#include <string>
#include <vector>

namespace centre {

/// Passes calls to a service. When a fault switch fires for a call, the call fails instead. The service
/// itself handles faults of the data, and all faults of streams, whose messages count as calls.
class FaultyService : public google::protobuf::Service
{
public:
    FaultyService(google::protobuf::Service& service, Faults& faults) : m_Service(service), m_Faults(faults)
    {
    }

    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override;

    const google::protobuf::ServiceDescriptor* GetDescriptor() override { return m_Service.GetDescriptor(); }
    const google::protobuf::Message&
    GetRequestPrototype(const google::protobuf::MethodDescriptor* method) const override
    {
        return m_Service.GetRequestPrototype(method);
    }
    const google::protobuf::Message&
    GetResponsePrototype(const google::protobuf::MethodDescriptor* method) const override
    {
        return m_Service.GetResponsePrototype(method);
    }

private:
    google::protobuf::Service& m_Service;
    Faults& m_Faults;
};

/// What a fault of Kind::Exit does.
[[noreturn]] void exitAsIfKilled();

/// Adds fault switches for the operations of these services. Throws Error(WrongUse) for a text that is not a
/// switch, and for an operation that no service has or that can't fail in that way.
void addFaults(Faults& faults, const std::vector<std::string>& texts,
               const std::vector<const google::protobuf::ServiceDescriptor*>& services);

} // namespace centre

#endif
