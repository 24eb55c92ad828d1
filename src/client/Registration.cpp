#include "client/Link.h"
#include "client/RecordKinds.h"
#include "lumo/client/Images.h"
#include "lumo/components/platform/Utf8.h"
#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <set>

namespace lumo {

using internal::Call;
using internal::refuse;

namespace {

bool isKeyCharacter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '_';
}

/// The form in which a record is registered: key='value' with single commas between them.
QString assignmentsOf(const Call& call, const internal::RecordKind& kind, const Images::Fields& fields)
{
    Images::check(fields);
    std::string text;
    bool hasCompany = false;
    for (const auto& [key, value] : fields) {
        if (!text.empty())
            text += ',';
        text.append(key).append("='").append(value).append("'");
        hasCompany = hasCompany || key == "companyID";
    }
    if (kind.kind == Record::Kind::Project && !hasCompany)
        text += ",companyID='" + std::to_string(call->companyID()) + "'";
    return QString::fromStdString(text);
}

[[noreturn]] void failed(const Call& call, const char* name)
{
    const internal::Reason reason = Call::reason();
    if (reason.kind != internal::Reason::Kind::KeyMissing)
        call.fail();
    throw Error(Error::Kind::WrongUse, std::string("a ") + name + " needs more: " + describe(reason), {},
                describe(reason));
}

} // namespace

void Images::check(const Fields& fields)
{
    std::set<std::string> known;
    for (const auto& [key, value] : fields) {
        if (!known.insert(key).second)
            refuse("the field " + key + " has two values");
        if (key.empty() || !std::all_of(key.begin(), key.end(), isKeyCharacter))
            refuse("'" + key + "' is not a field: fields are named as in imageName and value1");
        if (!platform::isUtf8(value))
            refuse("the value of " + key + " is not UTF-8");
        // A reader takes the last =' for the begin of the value, and no text goes on after a NUL.
        const char* const unfit = value.find(',') != std::string::npos    ? "a comma"
                                  : value.find("='") != std::string::npos ? "a quote after an equals sign"
                                  : value.find('\0') != std::string::npos ? "a NUL character"
                                                                          : nullptr;
        if (unfit != nullptr) {
            refuse("the value of " + key + " can't be registered: it has " + unfit +
                   ", which the form of a registration has no room for");
        }
    }
}

RecordId Images::add(Kind kind, const Fields& fields) const
{
    const Call call(*m_Link);
    const internal::RecordKind& known = internal::kindOf(kind);
    const RecordId id(call->addImage(known.number, assignmentsOf(call, known, fields)));
    if (!id.isSet())
        failed(call, known.name);
    return id;
}

std::vector<RecordId> Images::addAll(Kind kind, const std::vector<Fields>& records) const
{
    const Call call(*m_Link);
    const internal::RecordKind& known = internal::kindOf(kind);
    QStringList texts;
    for (const Fields& fields : records)
        texts.append(assignmentsOf(call, known, fields));
    QList<unsigned int> numbers;
    if (!call->addImage(known.number, texts, numbers))
        failed(call, known.name);
    if (numbers.size() != texts.size()) {
        throw Error(Error::Kind::Other, "the centre returned " + std::to_string(numbers.size()) +
                                            " identifiers for " + std::to_string(texts.size()) + " records");
    }
    std::vector<RecordId> ids;
    std::transform(numbers.begin(), numbers.end(), std::back_inserter(ids),
                   [](unsigned int number) { return RecordId(number); });
    return ids;
}

} // namespace lumo
