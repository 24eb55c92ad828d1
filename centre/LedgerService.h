#ifndef LUMO_CENTRE_LEDGERSERVICE_H
#define LUMO_CENTRE_LEDGERSERVICE_H

#include "centre/ConnectionPool.h"
#include "ledgerserver.pb.h"

#include <unordered_map>

namespace centre {

/// The catalogue service: each operation is answered by its query. Which of the records a user sees is for
/// the calls to say.
class LedgerService : public ledgerserver::LedgerServices
{
public:
    /// Prepares all operations once, so that a mistake shows at the start: throws what Query throws.
    explicit LedgerService(ConnectionPool& pool);

    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override;

private:
    ConnectionPool& m_Pool;
    std::unordered_map<const google::protobuf::MethodDescriptor*, const Operation*> m_Operations;
};

} // namespace centre

#endif
