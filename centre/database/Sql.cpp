#include "centre/database/Sql.h"

#include <mutex>
#include <set>
#include <utility>

namespace centre {

namespace {

struct SqlTexts
{
    std::mutex mutex;
    std::set<const Sql*> all;
};

/// Never destroyed: texts that are static register before it is known which of them ends last.
SqlTexts& sqlTexts()
{
    static auto* const known = new SqlTexts;
    return *known;
}

} // namespace

Sql::Sql(std::string text) : m_Text(std::move(text))
{
    SqlTexts& known = sqlTexts();
    const std::lock_guard<std::mutex> lock(known.mutex);
    known.all.insert(this);
}

Sql::~Sql()
{
    SqlTexts& known = sqlTexts();
    const std::lock_guard<std::mutex> lock(known.mutex);
    known.all.erase(this);
}

std::vector<std::string> Sql::all()
{
    SqlTexts& known = sqlTexts();
    const std::lock_guard<std::mutex> lock(known.mutex);
    std::vector<std::string> texts;
    for (const Sql* sql : known.all)
        texts.push_back(*sql);
    return texts;
}

} // namespace centre
