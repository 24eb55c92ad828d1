#ifndef LUMO_CENTRE_ENDPOINT_ENDPOINTOBSERVER_H
#define LUMO_CENTRE_ENDPOINT_ENDPOINTOBSERVER_H

#include "centre/store/ConnectionPool.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace centre {

/// An address that serves, as observers see it. Safe from any thread.
class Observed
{
public:
    virtual ~Observed() = default;
    virtual const std::string& name() const = 0;
    virtual wirecall::RpcServer::Load load() const = 0;
    virtual const ConnectionPool& pool() const = 0;
    /// The pool of a replica that answers reads; null without one.
    virtual const ConnectionPool* replica() const { return nullptr; }
    virtual std::size_t openTransfers() const = 0;
};

/// Who called what.
struct ObservedCall
{
    std::string_view operation; ///< one of a fixed set, which lives as long as the process
    std::string peer;
    std::string user;
    std::string company; ///< its number, a text such as "LUMO"; empty: unknown
};

/// Sees what endpoints do. Its functions are called on any thread, and must not throw.
class EndpointObserver
{
public:
    virtual ~EndpointObserver() = default;
    /// Before its first call.
    virtual void started(const Observed& endpoint) = 0;
    /// The endpoint has no calls any more.
    virtual void stopped(const Observed& endpoint) = 0;
    virtual void ended(const Observed& endpoint, const ObservedCall& call,
                       const wirecall::CallReport& report) = 0;
    /// What the report's `result` is made with; null for none.
    virtual wirecall::RpcServer::Judge judge() const { return nullptr; }
};

} // namespace centre

#endif
