#ifndef LUMO_CENTRE_LEDGER_CHANGES_H
#define LUMO_CENTRE_LEDGER_CHANGES_H

#include "centre/store/ConnectionPool.h"

#include <functional>
#include <string>
#include <vector>

namespace centre {

/// The user who asks for a change, and the connection for it.
struct Caller
{
    Connection& connection;
    const User& user;
};

/// An operation of the catalogue service that changes the catalogue, in one transaction. An exception, or any
/// result but kDone, rolls it back.
struct Change
{
    std::string name;
    std::function<Result(const Caller& caller, const google::protobuf::Message& request,
                         google::protobuf::Message& response)>
        run;
    bool addsRecords = false; ///< from a DataUtilBeanReq with texts of records
};

template <class Request, class Response>
Change makeChange(const char* operation, Result (*run)(const Caller&, const Request&, Response&))
{
    using google::protobuf::Message;
    return {operation,
            [run](const Caller& caller, const Message& request, Message& response) {
                return run(caller, static_cast<const Request&>(request), static_cast<Response&>(response));
            },
            false};
}

std::vector<Change> linkChanges();
std::vector<Change> commentChanges();
std::vector<Change> registrationChanges();

} // namespace centre

#endif
