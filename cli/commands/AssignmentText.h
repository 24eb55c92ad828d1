#ifndef LUMO_CLI_COMMANDS_ASSIGNMENTTEXT_H
#define LUMO_CLI_COMMANDS_ASSIGNMENTTEXT_H

#include <string>

namespace cli {

/// The form in which a record is registered, key='value' with single commas between them, built up piece by
/// piece.
class AssignmentText
{
public:
    /// Throws Failure (WrongUse) for what this form can't carry.
    void add(const std::string& key, const std::string& value);

    const std::string& text() const { return m_Text; }

private:
    std::string m_Text;
};

} // namespace cli

#endif
