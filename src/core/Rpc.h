#ifndef LUMO_CORE_RPC_H
#define LUMO_CORE_RPC_H

namespace google {
namespace protobuf {
class Closure;
class RpcController;
} // namespace protobuf
} // namespace google

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

/// The operations of the catalogue, the planning and the data operations service. The source that names one
/// includes the service's generated header.
#define LUMO_LEDGER(operation)                                                                               \
    Rpc                                                                                                      \
    {                                                                                                        \
#operation, &ledgerserver::LedgerServices_Stub::operation                                            \
    }
#define LUMO_TAVREL(operation)                                                                               \
    Rpc                                                                                                      \
    {                                                                                                        \
#operation, &Tavrel::TavrelServer_Stub::operation                                                    \
    }
#define LUMO_FORGE(operation)                                                                                \
    Rpc                                                                                                      \
    {                                                                                                        \
#operation, &forgeserver::ForgeServices_Stub::operation                                              \
    }

#endif
