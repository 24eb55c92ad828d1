#include "centre/ledger/RecordCompletion.h"

#include "centre/base/Error.h"
#include "centre/ledger/AssignmentText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <map>
#include <string>

namespace centre {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kMostTime{5};

const std::string* find(const RecordTexts& texts, const std::string& key)
{
    const auto found =
        std::find_if(texts.begin(), texts.end(), [&key](const auto& each) { return each.first == key; });
    return found == texts.end() ? nullptr : &found->second;
}

bool isBound(const std::string& key)
{
    return key == "west" || key == "south" || key == "east" || key == "north";
}

/// Bounds are given as a whole or not at all.
bool lacks(const RecordTexts& texts, const std::string& key)
{
    if (!isBound(key))
        return find(texts, key) == nullptr;
    return std::none_of(texts.begin(), texts.end(), [](const auto& each) { return isBound(each.first); });
}

/// Whether a value can be in an assignment text.
bool isAssignable(const std::string& value)
{
    return value.find_first_of(std::string(",'\0", 3)) == std::string::npos;
}

/// The main files of one request, each read once.
class MainFiles
{
public:
    MainFiles(const User& user, const MainFileTexts& textsOf) : m_User(user), m_TextsOf(textsOf) {}

    const RecordTexts& textsOf(const std::string& fileId)
    {
        const auto [known, isNew] = m_Known.try_emplace(fileId);
        std::uint32_t id = 0;
        std::from_chars(fileId.data(), fileId.data() + fileId.size(), id);
        if (isNew && id != 0 && Clock::now() < m_End)
            known->second = m_TextsOf(m_User, id, [this] { return Clock::now() >= m_End; });
        return known->second;
    }

private:
    const User& m_User;
    const MainFileTexts& m_TextsOf;
    const Clock::time_point m_End = Clock::now() + kMostTime;
    std::map<std::string, RecordTexts> m_Known;
};

void complete(std::string& assignments, MainFiles& mainFiles)
{
    RecordTexts texts;
    try {
        texts = parseAssignments(assignments);
    } catch (const Error&) { // registering it gives the reason
        return;
    }
    const std::string* file = find(texts, "mainFileID");
    if (file == nullptr || !(lacks(texts, "sensor") || lacks(texts, "date") || lacks(texts, "west")))
        return;
    for (const auto& [key, value] : mainFiles.textsOf(*file))
        if (lacks(texts, key) && isAssignable(value))
            assignments.append(",").append(key).append("='").append(value).append("'");
}

} // namespace

void completeRecords(ledgerserver::DataUtilBeanReq& request, const User& user, const MainFileTexts& textsOf)
{
    MainFiles mainFiles(user, textsOf);
    if (request.has_checkdatabean())
        complete(*request.mutable_checkdatabean()->mutable_sqldata(), mainFiles);
    for (ledgerserver::CheckDataBean& record : *request.mutable_checkdatabeans())
        complete(*record.mutable_sqldata(), mainFiles);
}

} // namespace centre
