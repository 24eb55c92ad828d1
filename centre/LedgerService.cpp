#include "centre/LedgerService.h"

#include "centre/LedgerOperations.h"

#include <iostream>

namespace centre {

using google::protobuf::MethodDescriptor;

LedgerService::LedgerService(ConnectionPool& pool) : m_Pool(pool)
{
    ConnectionPool::Lease connection(pool);
    for (const Operation& operation : ledgerOperations()) {
        const MethodDescriptor* method = descriptor()->FindMethodByName(operation.name);
        connection->query(operation, *method);
        m_Operations.emplace(method, &operation);
    }
}

void LedgerService::CallMethod(const MethodDescriptor* method, google::protobuf::RpcController*,
                               const google::protobuf::Message* request, google::protobuf::Message* response,
                               google::protobuf::Closure* done)
{
    try {
        ConnectionPool::Lease connection(m_Pool);
        connection->query(*m_Operations.at(method), *method).answer(*request, *response);
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: " + method->name() + ": " + exception.what() + "\n";
        response->Clear();
        response->GetReflection()->SetInt32(response, response->GetDescriptor()->FindFieldByName("result"),
                                            kError);
    }
    done->Run();
}

} // namespace centre
