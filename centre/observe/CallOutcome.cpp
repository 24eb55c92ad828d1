#include "centre/observe/CallOutcome.h"

#include "centre/base/Result.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

namespace centre {

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

CallOutcome ofResult(std::int32_t result)
{
    if (result == kDone)
        return {"done", Severity::Info};
    if (result == kNothingFound)
        return {"nothing_found", Severity::Info};
    return {"failed", Severity::Error};
}

/// `status` is an enumeration of a box: 0 is success.
CallOutcome ofStatus(const google::protobuf::EnumValueDescriptor& status)
{
    return {status.name(), status.number() == 0 ? Severity::Info : Severity::Warning};
}

CallOutcome ofResponse(const Message& response)
{
    const google::protobuf::Descriptor& type = *response.GetDescriptor();
    const google::protobuf::Reflection& fields = *response.GetReflection();
    if (const FieldDescriptor* result = type.FindFieldByName("result");
        result != nullptr && result->cpp_type() == FieldDescriptor::CPPTYPE_INT32)
        return ofResult(fields.GetInt32(response, result));
    const FieldDescriptor* status = type.FindFieldByName("status");
    if (status == nullptr || status->is_repeated())
        return {"OK", Severity::Info};
    if (status->cpp_type() == FieldDescriptor::CPPTYPE_ENUM)
        return ofStatus(*fields.GetEnum(response, status));
    if (status->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE)
        return {"OK", Severity::Info};
    const FieldDescriptor* code = status->message_type()->FindFieldByName("status_code");
    const Message& inner = fields.GetMessage(response, status);
    return code == nullptr ? CallOutcome{"OK", Severity::Info}
                           : ofResult(inner.GetReflection()->GetInt32(inner, code));
}

Severity severityOf(std::string_view status)
{
    return status == "INTERNAL" || status == "UNKNOWN" ? Severity::Error : Severity::Warning;
}

} // namespace

CallOutcome outcomeOf(const wirecall::CallReport& report)
{
    if (report.outcome != "OK")
        return {report.outcome, severityOf(report.outcome)};
    if (report.response == nullptr)
        return {"OK", Severity::Info};
    return ofResponse(*report.response);
}

std::string_view operationOf(const wirecall::ServerCall& call)
{
    const std::string_view method = call.method();
    return method.empty() ? "unknown" : method.substr(method.rfind('.') + 1);
}

} // namespace centre
