#include "cli/commands/AssignmentText.h"

#include "cli/ExitCode.h"

#include "lumo/components/platform/Utf8.h"

#include <algorithm>

namespace cli {

namespace {

bool isKeyCharacter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '_';
}

} // namespace

void AssignmentText::add(const std::string& key, const std::string& value)
{
    if (key.empty() || !std::all_of(key.begin(), key.end(), isKeyCharacter))
        refuse("'" + key + "' is not a field name: write it as in imageName and value1");
    if (!platform::isUtf8(value))
        refuse("the value of " + key + " is not UTF-8");
    // A reader takes the last =' for the begin of the value, and no text goes on behind a NUL.
    const char* const carried = value.find(',') != std::string::npos    ? "a comma"
                                : value.find("='") != std::string::npos ? "a quote after an equals sign"
                                : value.find('\0') != std::string::npos ? "a NUL character"
                                                                        : nullptr;
    if (carried != nullptr) {
        refuse("the value of " + key + " can't be registered: it holds " + carried +
               ", which the form of a registration has no room for");
    }
    m_Text += (m_Text.empty() ? "" : ",") + key + "='" + value + "'";
}

} // namespace cli
