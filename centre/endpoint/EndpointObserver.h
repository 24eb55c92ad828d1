#ifndef LUMO_CENTRE_ENDPOINT_ENDPOINTOBSERVER_H
#define LUMO_CENTRE_ENDPOINT_ENDPOINTOBSERVER_H

#include "lumo/components/wirecall/RpcServer.h"

namespace centre {

class Endpoint;

/// Sees what endpoints do. Its functions are called on any thread, and must not throw.
class EndpointObserver
{
public:
    virtual ~EndpointObserver() = default;
    /// Before its first call.
    virtual void started(Endpoint& endpoint) = 0;
    /// The endpoint has no calls any more.
    virtual void stopped(Endpoint& endpoint) = 0;
    virtual void ended(Endpoint& endpoint, const wirecall::ServerCall& call,
                       const wirecall::CallReport& report) = 0;
    /// What the report's `result` is made with; null for none.
    virtual wirecall::RpcServer::Judge judge() const { return nullptr; }
};

} // namespace centre

#endif
