#include "centre/database/Database.h"

namespace centre {

std::string Database::value(const std::string& sql)
{
    const std::unique_ptr<Statement> statement = prepare(sql);
    return statement->step() ? statement->string(0) : std::string();
}

std::optional<std::uint32_t> Statement::runForId()
{
    const ResetAtEnd resetAtEnd(*this);
    if (!step())
        return std::nullopt;
    const std::uint32_t inserted = id(0);
    while (step()) // a failure to commit shows at the end
        continue;
    return inserted;
}

} // namespace centre
