#include "tests/fuzz/Script.h"

#include "lumo/components/wirecall/RpcController.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/text_format.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>

using google::protobuf::Any;
using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::TextFormat;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

void ScriptedChannel::play(const fuzz::Script& script)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Script = script;
    m_Next = 0;
}

void ScriptedChannel::CallMethod(const google::protobuf::MethodDescriptor*,
                                 google::protobuf::RpcController* controller, const Message* request,
                                 Message* response, google::protobuf::Closure* done)
{
    wirecall::RpcController& call = *static_cast<wirecall::RpcController*>(controller);
    call.setOutcome(wirecall::Failure::NoConnection, "no more answers", false);
    response->Clear();
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        while (m_Next < m_Script.answers_size() && call.Failed()) {
            const fuzz::Answer& answer = m_Script.answers(m_Next++);
            if (answer.fails()) {
                call.setOutcome(wirecall::Failure::Other, "fails", true);
                break;
            }
            std::string type;
            if (!Any::ParseAnyTypeUrl(answer.message().type_url(), &type) || type != response->GetTypeName())
                continue;
            response->ParsePartialFromString(answer.message().value());
            complete(answer, *request, *response);
            call.setOutcome(wirecall::Failure::None, std::string(), true);
        }
    }
    if (done != nullptr)
        done->Run();
}

namespace {

/// Changes one field, somewhere in a message.
class Mutator
{
public:
    explicit Mutator(unsigned seed) : m_Random(seed) {}

    void change(Message& message)
    {
        const Descriptor& type = *message.GetDescriptor();
        if (type.full_name() == Any::descriptor()->full_name())
            return changeAny(static_cast<Any&>(message));
        if (type.field_count() == 0)
            return;
        const FieldDescriptor& field = *type.field(pick(type.field_count()));
        const Reflection& reflection = *message.GetReflection();
        if (field.is_repeated())
            changeList(message, reflection, field);
        else if (reflection.HasField(message, &field) && pick(5) == 0)
            reflection.ClearField(&message, &field);
        else
            changeValue(message, reflection, field, kSingle);
    }

    int pick(int count) { return static_cast<int>(m_Random() % static_cast<unsigned>(count)); }

private:
    static constexpr int kSingle = -1, kAdd = -2; // else the place in a list

    void changeAny(Any& any)
    {
        std::unique_ptr<Message> inner;
        std::string name;
        if (Any::ParseAnyTypeUrl(any.type_url(), &name) && pick(10) != 0) {
            const auto* pool = google::protobuf::DescriptorPool::generated_pool();
            if (const Descriptor* type = pool->FindMessageTypeByName(name))
                inner = make(type);
        }
        if (inner == nullptr) {
            const auto services = scriptedServices();
            const auto& service =
                *services[static_cast<std::size_t>(pick(static_cast<int>(services.size())))];
            inner = make(service.method(pick(service.method_count()))->output_type());
        }
        inner->ParsePartialFromString(any.value());
        change(*inner);
        any.PackFrom(*inner);
    }

    static std::unique_ptr<Message> make(const Descriptor* type)
    {
        return std::unique_ptr<Message>(
            google::protobuf::MessageFactory::generated_factory()->GetPrototype(type)->New());
    }

    void changeList(Message& message, const Reflection& reflection, const FieldDescriptor& field)
    {
        const int size = reflection.FieldSize(message, &field);
        const int action = size == 0 ? 0 : pick(8);
        if (action == 0)
            return changeValue(message, reflection, field, kAdd);
        if (action == 1) {
            reflection.SwapElements(&message, &field, pick(size), size - 1);
            return reflection.RemoveLast(&message, &field);
        }
        if (action == 2)
            return reflection.SwapElements(&message, &field, pick(size), pick(size));
        if (action == 3 && field.cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE)
            return reflection.AddMessage(&message, &field)
                ->CopyFrom(reflection.GetRepeatedMessage(message, &field, pick(size)));
        changeValue(message, reflection, field, pick(size));
    }

    void changeValue(Message& message, const Reflection& reflection, const FieldDescriptor& field, int place)
    {
        const auto put = [&](auto set, auto setAt, auto add, const auto& value) {
            if (place == kSingle)
                (reflection.*set)(&message, &field, value);
            else if (place == kAdd)
                (reflection.*add)(&message, &field, value);
            else
                (reflection.*setAt)(&message, &field, place, value);
        };
        using R = Reflection;
        switch (field.cpp_type()) {
        case FieldDescriptor::CPPTYPE_INT32:
            return put(&R::SetInt32, &R::SetRepeatedInt32, &R::AddInt32, static_cast<std::int32_t>(number()));
        case FieldDescriptor::CPPTYPE_UINT32:
            return put(&R::SetUInt32, &R::SetRepeatedUInt32, &R::AddUInt32,
                       static_cast<std::uint32_t>(number()));
        case FieldDescriptor::CPPTYPE_INT64:
            return put(&R::SetInt64, &R::SetRepeatedInt64, &R::AddInt64, static_cast<std::int64_t>(number()));
        case FieldDescriptor::CPPTYPE_UINT64:
            return put(&R::SetUInt64, &R::SetRepeatedUInt64, &R::AddUInt64, number());
        case FieldDescriptor::CPPTYPE_DOUBLE:
            return put(&R::SetDouble, &R::SetRepeatedDouble, &R::AddDouble, static_cast<double>(number()));
        case FieldDescriptor::CPPTYPE_FLOAT:
            return put(&R::SetFloat, &R::SetRepeatedFloat, &R::AddFloat, static_cast<float>(number()));
        case FieldDescriptor::CPPTYPE_BOOL:
            return put(&R::SetBool, &R::SetRepeatedBool, &R::AddBool, pick(2) == 0);
        case FieldDescriptor::CPPTYPE_ENUM:
            return put(&R::SetEnumValue, &R::SetRepeatedEnumValue, &R::AddEnumValue,
                       field.enum_type()->value(pick(field.enum_type()->value_count()))->number());
        case FieldDescriptor::CPPTYPE_STRING:
            return put(&R::SetString, &R::SetRepeatedString, &R::AddString,
                       text(place == kAdd      ? std::string()
                            : place == kSingle ? reflection.GetString(message, &field)
                                               : reflection.GetRepeatedString(message, &field, place)));
        case FieldDescriptor::CPPTYPE_MESSAGE:
            return change(place == kAdd      ? *reflection.AddMessage(&message, &field)
                          : place == kSingle ? *reflection.MutableMessage(&message, &field)
                                             : *reflection.MutableRepeatedMessage(&message, &field, place));
        }
    }

    std::uint64_t number()
    {
        static constexpr std::uint64_t kMiB = 1 << 20;
        static constexpr std::uint64_t kValues[] = {0,        1,          2,          10,       10000,
                                                    kMiB - 1, kMiB,       kMiB + 1,   2 * kMiB, 1ULL << 31,
                                                    ~0U,      1ULL << 44, 1ULL << 63, ~0ULL};
        const int choice = pick(std::size(kValues) + 2);
        if (choice < static_cast<int>(std::size(kValues)))
            return kValues[choice];
        return choice % 2 == 0 ? static_cast<std::uint64_t>(pick(100)) : m_Random();
    }

    std::string text(std::string value)
    {
        static const char* const kTexts[] = {"",  "a", "a/b",   "b",           "..",
                                             ".", "/", "@/new", "a/../../new", "link/new"};
        if (pick(3) == 0)
            return kTexts[pick(std::size(kTexts))];
        const std::size_t size = value.size();
        value.resize(std::min<std::size_t>(size * 2 + 16, 4096));
        value.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(value.data()),
                                      std::min(size, value.size()), value.size()));
        return value;
    }

    std::mt19937_64 m_Random;
};

bool parse(const std::uint8_t* data, std::size_t size, fuzz::Script& script)
{
    return TextFormat::ParseFromString({reinterpret_cast<const char*>(data), size}, &script);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed)
{
    fuzz::Script script;
    if (!parse(data, size, script))
        script.Clear();
    Mutator mutator(seed);
    for (int changes = 1 + mutator.pick(4); changes > 0; --changes)
        mutator.change(script);
    TextFormat::Printer printer;
    printer.SetExpandAny(true);
    std::string text;
    if (!printer.PrintToString(script, &text) || text.size() > maximum)
        return size;
    std::copy(text.begin(), text.end(), data);
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const google::protobuf::LogSilencer silencer; // which reports bytes that are not UTF-8
    fuzz::Script script;
    if (parse(data, size, script))
        runScript(script);
    return 0;
}
