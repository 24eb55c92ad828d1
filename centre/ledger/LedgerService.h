#ifndef LUMO_CENTRE_LEDGER_LEDGERSERVICE_H
#define LUMO_CENTRE_LEDGER_LEDGERSERVICE_H

#include "centre/ledger/Changes.h"
#include "centre/ledger/RecordCompletion.h"
#include "centre/store/ConnectionPool.h"
#include "centre/store/ReadPool.h"
#include "ledgerserver.pb.h"

#include <unordered_map>
#include <vector>

namespace centre {

/// The catalogue service: answers an operation by its query, or makes its change. A user reads and changes
/// the records of the user's company; those of others do not exist for the user.
class LedgerService : public ledgerserver::LedgerServices
{
public:
    /// Prepares all queries once, so that a mistake in one fails the start: throws what Query throws.
    /// `mainFileTexts` completes records that are registered; may be empty.
    LedgerService(ConnectionPool& pool, ReadPool& reads, MainFileTexts mainFileTexts = {});

    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override;

private:
    using Method = google::protobuf::MethodDescriptor;

    void ask(const Operation& operation, const Method& method, const std::string& token,
             const google::protobuf::Message& request, google::protobuf::Message& response);
    void make(const Change& change, const std::string& token, const google::protobuf::Message& request,
              google::protobuf::Message& response);

    /// Returns a registration's request with what its main files say.
    ledgerserver::DataUtilBeanReq completed(const google::protobuf::Message& request,
                                            const std::string& token);

    ConnectionPool& m_Pool;
    ReadPool& m_Reads;
    const MainFileTexts m_MainFileTexts;
    const std::vector<Operation> m_Table;
    std::unordered_map<const Method*, const Operation*> m_Operations;
    std::unordered_map<const Method*, Change> m_Changes;
};

} // namespace centre

#endif
