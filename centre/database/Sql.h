#ifndef LUMO_CENTRE_DATABASE_SQL_H
#define LUMO_CENTRE_DATABASE_SQL_H

#include <string>
#include <vector>

namespace centre {

/// The text of a statement for both engines. All texts of the process are in one list, so that a test can
/// prepare them. Safe from any thread.
class Sql
{
public:
    explicit Sql(std::string text);
    ~Sql();
    Sql(const Sql&) = delete;
    Sql& operator=(const Sql&) = delete;

    operator const std::string&() const { return m_Text; }

    /// Returns the texts that exist now.
    static std::vector<std::string> all();

private:
    const std::string m_Text;
};

} // namespace centre

#endif
