#include "centre/observe/CallOutcome.h"

#include "centre/store/Query.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

namespace centre {

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

constexpr std::string_view kAnswered = "OK";
constexpr std::string_view kFailed = "failed";

std::string_view wordFor(std::int32_t result)
{
    if (result == kNothingFound)
        return "nothing_found";
    return result == kDone ? "done" : kFailed;
}

Severity severityOf(std::string_view result)
{
    for (const std::string_view fine :
         {std::string_view("done"), std::string_view("nothing_found"), kAnswered, std::string_view("DONE"),
          std::string_view("KEPT"), std::string_view("SERVING")})
        if (result == fine)
            return Severity::Info;
    for (const std::string_view bad :
         {kFailed, std::string_view("FAILED"), std::string_view("INTERNAL"), std::string_view("UNKNOWN")})
        if (result == bad)
            return Severity::Error;
    return Severity::Warning;
}

} // namespace

std::string_view resultOf(const Message& response)
{
    const google::protobuf::Descriptor& type = *response.GetDescriptor();
    const google::protobuf::Reflection& fields = *response.GetReflection();
    if (const FieldDescriptor* result = type.FindFieldByName("result");
        result != nullptr && result->cpp_type() == FieldDescriptor::CPPTYPE_INT32)
        return wordFor(fields.GetInt32(response, result));
    const FieldDescriptor* status = type.FindFieldByName("status");
    if (status == nullptr || status->is_repeated())
        return kAnswered;
    if (status->cpp_type() == FieldDescriptor::CPPTYPE_ENUM)
        return fields.GetEnum(response, status)->name();
    if (status->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE)
        return kAnswered;
    const FieldDescriptor* code = status->message_type()->FindFieldByName("status_code");
    const Message& inner = fields.GetMessage(response, status);
    return code == nullptr ? kAnswered : wordFor(inner.GetReflection()->GetInt32(inner, code));
}

CallOutcome::CallOutcome(const wirecall::CallReport& report)
    : result(report.outcome != "OK" || report.result.empty() ? report.outcome : report.result),
      severity(severityOf(result))
{
}

} // namespace centre
