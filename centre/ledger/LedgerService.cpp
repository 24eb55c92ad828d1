#include "centre/ledger/LedgerService.h"

#include "centre/base/Error.h"
#include "centre/ledger/LedgerOperations.h"
#include "centre/store/Ownership.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <iostream>
#include <utility>

namespace centre {

using google::protobuf::Message;
using google::protobuf::MethodDescriptor;

namespace {

std::vector<Operation> tableFor(ConnectionPool& pool)
{
    ConnectionPool::Lease connection(pool);
    return ledgerOperations(connection->database().dialect());
}

} // namespace

LedgerService::LedgerService(ConnectionPool& pool, ReadPool& reads, MainFileTexts mainFileTexts)
    : m_Pool(pool), m_Reads(reads), m_MainFileTexts(std::move(mainFileTexts)), m_Table(tableFor(pool))
{
    ConnectionPool::Lease connection(pool);
    for (const Operation& operation : m_Table) {
        const Method* method = descriptor()->FindMethodByName(operation.name);
        connection->query(operation, *method);
        m_Operations.emplace(method, &operation);
    }
    for (const std::vector<Change>& changes : {linkChanges(), commentChanges(), registrationChanges()})
        for (const Change& change : changes)
            m_Changes.emplace(descriptor()->FindMethodByName(change.name), change);
}

void LedgerService::CallMethod(const MethodDescriptor* method, google::protobuf::RpcController* controller,
                               const Message* request, Message* response, google::protobuf::Closure* done)
{
    const std::string& token = static_cast<wirecall::ServerCall*>(controller)->token();
    try {
        const auto change = m_Changes.find(method);
        const auto operation = m_Operations.find(method);
        if (change != m_Changes.end() && change->second.addsRecords && m_MainFileTexts)
            make(change->second, token, completed(*request, token), *response);
        else if (change != m_Changes.end())
            make(change->second, token, *request, *response);
        else if (operation != m_Operations.end())
            ask(*operation->second, *method, token, *request, *response);
        else
            controller->SetFailed(method->name() + " is not implemented");
    } catch (const ListTooLarge& tooLarge) {
        static_cast<wirecall::ServerCall*>(controller)->setExhausted(tooLarge.what());
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: " + method->name() + ": " + exception.what() + "\n";
        static_cast<wirecall::ServerCall*>(controller)->setReason(reasonFor(exception));
        response->Clear();
        setResult(*response, kError);
    }
    done->Run();
}

void LedgerService::ask(const Operation& operation, const Method& method, const std::string& token,
                        const Message& request, Message& response)
{
    m_Reads.read(token, [&](Connection& connection, const User& user) {
        response.Clear();
        connection.query(operation, method).answer(request, response, user.companyId);
    });
}

ledgerserver::DataUtilBeanReq LedgerService::completed(const Message& request, const std::string& token)
{
    ledgerserver::DataUtilBeanReq result = static_cast<const ledgerserver::DataUtilBeanReq&>(request);
    const User user = ConnectionPool::Lease(m_Pool)->requireUser(token);
    requireWriter(user);
    completeRecords(result, user, m_MainFileTexts);
    return result;
}

void LedgerService::make(const Change& change, const std::string& token, const Message& request,
                         Message& response)
{
    m_Pool.change([&](Connection& connection) {
        response.Clear();
        const User user = connection.requireUser(token);
        requireWriter(user);
        const Result result = change.run({connection, user}, request, response);
        setResult(response, result);
        return result == kDone;
    });
}

} // namespace centre
