#ifndef LUMO_CENTRE_STORE_QUERY_H
#define LUMO_CENTRE_STORE_QUERY_H

#include "centre/database/Database.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// The place of an operation's rows in its response.
enum class Shape
{
    Record, ///< the first row into the response's `bean`
    List,   ///< each row into a new element of the response's one list of beans
    Page,   ///< as List, shorter if it would be too large; a `page_size` below 1 or a `page_start` below 0 is
            ///< an error
    Values  ///< into the response's own fields: a total, a path; each row adds to a repeated field
};

/// One operation of a service, answered by one SQL statement. A parameter `:x` takes the value of the
/// request's field x: NULL if it is absent, a list of identifiers if it is repeated; `:caller_company` takes
/// the caller's company. A column y goes into the field y of its place in the response; NULL leaves the field
/// absent.
struct Operation
{
    std::string name;
    Shape shape;
    std::string sql;
    /// Changes a copy of the request so that the parameters can take it; null if the request needs no change.
    /// Throws std::runtime_error for a request that can't be valid.
    void (*makeFit)(google::protobuf::Message& request) = nullptr;
};

/// The values of the field `result` in the services' answers.
enum Result
{
    kDone = 0,
    kNothingFound = -1,
    kError = -2
};

/// The bytes that the records of one answer may have; a little less than a client takes.
constexpr std::size_t kLargestList = std::size_t(64) * 1024 * 1024;

/// A list has more than kLargestList bytes and can't be asked for in pages.
class ListTooLarge : public std::runtime_error
{
public:
    ListTooLarge()
        : std::runtime_error("the list has more than 64 MiB, which is more than one answer may have")
    {
    }
};

/// Sets the field `result` of a response, which must have one.
void setResult(google::protobuf::Message& response, std::int32_t result);

/// An operation prepared on one connection; used by one thread at a time. The constructor throws
/// DatabaseError or std::logic_error when the SQL does not match the method's messages.
class Query
{
public:
    Query(Database& database, const Operation& operation, const google::protobuf::MethodDescriptor& method);

    /// Whether the answer depends on the caller.
    bool asksForCaller() const { return m_CallerCompany != 0; }
    /// Fills `response`, its `result` included. `company` is the caller's, if the query asks for it.
    /// Throws DatabaseError or std::runtime_error.
    void answer(const google::protobuf::Message& request, google::protobuf::Message& response,
                std::uint32_t company = 0);

private:
    void step(const google::protobuf::Message& request, google::protobuf::Message& response);

    using Field = const google::protobuf::FieldDescriptor*;

    void bindAll(const google::protobuf::Message& request);
    google::protobuf::Message* target(google::protobuf::Message& response) const;
    void writeRow(google::protobuf::Message& message);

    Shape m_Shape;
    void (*m_MakeFit)(google::protobuf::Message& request);
    std::unique_ptr<Statement> m_Statement;
    const int m_CallerCompany;                       ///< its parameter's place; 0: there is none
    std::vector<std::pair<int, Field>> m_Parameters; ///< place in the statement, field of the request
    Field m_Result;
    Field m_Bean = nullptr;      ///< the response's field that takes beans; null for Values
    std::vector<Field> m_Fields; ///< by column
    std::string m_Row;           ///< one row as the message's bytes; kept for its memory
};

} // namespace centre

#endif
