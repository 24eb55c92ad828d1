#include "centre/store/Query.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/reflection.h>

#include <stdexcept>

namespace centre {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::io::CodedOutputStream;

// The wire types, which say how a field's value is encoded.
constexpr std::uint32_t kVarint = 0;
constexpr std::uint32_t kLengthDelimited = 2;

const FieldDescriptor* require(const Descriptor& message, const std::string& field)
{
    if (const FieldDescriptor* found = message.FindFieldByName(field))
        return found;
    throw std::logic_error(message.name() + " has no field " + field);
}

const FieldDescriptor* listOfBeans(const Descriptor& response)
{
    for (int i = 0; i < response.field_count(); ++i)
        if (response.field(i)->is_repeated() &&
            response.field(i)->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE)
            return response.field(i);
    throw std::logic_error(response.name() + " has no list of beans");
}

/// Identifiers are unsigned, also where they travel as int32.
bool isIdentifier(const FieldDescriptor& field)
{
    const std::string& name = field.name();
    return name.size() > 3 && name.compare(name.size() - 3, 3, "_id") == 0;
}

void bindInt32(Statement& statement, int place, std::int32_t value, bool identifier)
{
    if (identifier)
        statement.bind(place, static_cast<std::uint32_t>(value));
    else
        statement.bind(place, value);
}

void bindField(Statement& statement, int place, const Message& message, const FieldDescriptor* field)
{
    const Reflection& reflection = *message.GetReflection();
    if (!reflection.HasField(message, field))
        return statement.bind(place, std::nullopt);
    switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_INT32:
        return bindInt32(statement, place, reflection.GetInt32(message, field), isIdentifier(*field));
    case FieldDescriptor::CPPTYPE_UINT32:
        return statement.bind(place, reflection.GetUInt32(message, field));
    case FieldDescriptor::CPPTYPE_BOOL:
        return statement.bind(place, reflection.GetBool(message, field) ? 1 : 0);
    case FieldDescriptor::CPPTYPE_DOUBLE:
        return statement.bind(place, reflection.GetDouble(message, field));
    case FieldDescriptor::CPPTYPE_STRING:
        return statement.bind(place, reflection.GetString(message, field));
    default:
        throw std::logic_error("a parameter can't be of the type of " + field->full_name());
    }
}

void bindIdentifiers(Statement& statement, int place, const Message& message, const FieldDescriptor* field)
{
    const auto ids = message.GetReflection()->GetRepeatedFieldRef<std::uint32_t>(message, field);
    statement.bind(place, Statement::Identifiers(ids.begin(), ids.end()));
}

/// Writes a column's value, unless it is NULL, as a message's bytes.
void writeField(CodedOutputStream& bytes, const FieldDescriptor& field, Statement& row, int column)
{
    const auto tag = [&](std::uint32_t wireType) {
        bytes.WriteTag(static_cast<std::uint32_t>(field.number()) << 3 | wireType);
    };
    switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_INT32:
        if (const auto value = row.integer(column)) {
            tag(kVarint);
            bytes.WriteVarint32SignExtended(static_cast<std::int32_t>(*value));
        }
        return;
    case FieldDescriptor::CPPTYPE_UINT32:
        if (const auto value = row.integer(column)) {
            tag(kVarint);
            bytes.WriteVarint32(static_cast<std::uint32_t>(*value));
        }
        return;
    case FieldDescriptor::CPPTYPE_STRING:
        if (const auto text = row.text(column)) {
            tag(kLengthDelimited);
            bytes.WriteVarint32(static_cast<std::uint32_t>(text->size()));
            bytes.WriteRaw(text->data(), static_cast<int>(text->size()));
        }
        return;
    default:
        throw std::logic_error("a column can't be of the type of " + field.full_name());
    }
}

ValueType typeOf(const FieldDescriptor& field)
{
    if (field.is_repeated())
        return ValueType::Identifiers;
    switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
        return ValueType::Real;
    case FieldDescriptor::CPPTYPE_STRING:
        return ValueType::Text;
    default:
        return ValueType::Integer;
    }
}

/// Prepares an operation with the types of the request's fields.
std::unique_ptr<Statement> prepared(Database& database, const Operation& operation, const Descriptor& request)
{
    ParameterTypes types = {{":caller_company", ValueType::Integer}};
    for (int i = 0; i < request.field_count(); ++i)
        types.emplace_back(":" + request.field(i)->name(), typeOf(*request.field(i)));
    return operation.shape == Shape::List || operation.shape == Shape::Page
               ? database.prepareList(operation.sql, types)
               : database.prepare(operation.sql, types);
}

void requirePage(const Message& request)
{
    const Reflection& reflection = *request.GetReflection();
    const Descriptor& fields = *request.GetDescriptor();
    const int size = reflection.GetInt32(request, require(fields, "page_size"));
    const int start = reflection.GetInt32(request, require(fields, "page_start"));
    if (size <= 0 || start < 0)
        throw std::runtime_error("page_size must be positive and page_start not negative, not " +
                                 std::to_string(size) + " and " + std::to_string(start));
}

} // namespace

void setResult(Message& response, std::int32_t result)
{
    response.GetReflection()->SetInt32(&response, require(*response.GetDescriptor(), "result"), result);
}

Query::Query(Database& database, const Operation& operation, const google::protobuf::MethodDescriptor& method)
    : m_Shape(operation.shape),
      m_MakeFit(operation.makeFit),
      m_Statement(prepared(database, operation, *method.input_type())),
      m_CallerCompany(m_Statement->parameter(":caller_company")),
      m_Result(require(*method.output_type(), "result"))
{
    const Descriptor& request = *method.input_type();
    for (int i = 0; i < request.field_count(); ++i)
        if (const int place = m_Statement->parameter(":" + request.field(i)->name()))
            m_Parameters.emplace_back(place, request.field(i));
    const int parameters = static_cast<int>(m_Parameters.size()) + (asksForCaller() ? 1 : 0);
    if (parameters != m_Statement->parameterCount())
        throw std::logic_error(operation.name + " has a parameter that its request lacks");

    if (m_Shape == Shape::Record)
        m_Bean = require(*method.output_type(), "bean");
    else if (m_Shape != Shape::Values)
        m_Bean = listOfBeans(*method.output_type());
    const Descriptor& rows = m_Bean ? *m_Bean->message_type() : *method.output_type();
    for (int column = 0; column < m_Statement->columnCount(); ++column)
        m_Fields.push_back(require(rows, m_Statement->columnName(column)));
}

void Query::answer(const Message& request, Message& response, std::uint32_t company)
{
    if (asksForCaller())
        m_Statement->bind(m_CallerCompany, company);
    if (m_Shape == Shape::Page)
        requirePage(request);
    if (!m_MakeFit)
        return step(request, response);
    const std::unique_ptr<Message> fit(request.New());
    fit->CopyFrom(request);
    m_MakeFit(*fit);
    step(*fit, response);
}

void Query::step(const Message& request, Message& response)
{
    const ResetAtEnd resetAtEnd(*m_Statement);
    bindAll(request);
    bool found = false;
    std::size_t bytes = 0;
    while (m_Statement->step()) {
        found = true;
        writeRow(*target(response));
        bytes += m_Row.size();
        if (m_Shape == Shape::Record || (m_Shape == Shape::Page && bytes >= kLargestList))
            break;
        if (bytes > kLargestList)
            throw ListTooLarge();
    }
    response.GetReflection()->SetInt32(&response, m_Result, found ? kDone : kNothingFound);
}

void Query::bindAll(const Message& request)
{
    for (const auto& [place, field] : m_Parameters)
        field->is_repeated() ? bindIdentifiers(*m_Statement, place, request, field)
                             : bindField(*m_Statement, place, request, field);
}

Message* Query::target(Message& response) const
{
    if (!m_Bean)
        return &response;
    const Reflection& reflection = *response.GetReflection();
    return m_Bean->is_repeated() ? reflection.AddMessage(&response, m_Bean)
                                 : reflection.MutableMessage(&response, m_Bean);
}

/// Generated code reads bytes several times faster than fields are set by descriptor.
void Query::writeRow(Message& message)
{
    m_Row.clear();
    {
        google::protobuf::io::StringOutputStream row(&m_Row);
        CodedOutputStream bytes(&row);
        for (std::size_t column = 0; column < m_Fields.size(); ++column)
            writeField(bytes, *m_Fields[column], *m_Statement, static_cast<int>(column));
    }
    message.MergeFromString(m_Row);
}

} // namespace centre
