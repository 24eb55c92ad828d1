#include "centre/database/Sql.h"

#include <mutex>
#include <set>
#include <utility>

namespace centre {

namespace {

struct KnownSql
{
    std::mutex mutex;
    std::set<const Sql*> all;
};

/// Never destroyed: texts that are static register before it is known which of them ends last.
KnownSql& knownSql()
{
    static auto* const known = new KnownSql;
    return *known;
}

} // namespace

Sql::Sql(std::string text) : m_Text(std::move(text))
{
    KnownSql& known = knownSql();
    const std::lock_guard<std::mutex> lock(known.mutex);
    known.all.insert(this);
}

Sql::~Sql()
{
    KnownSql& known = knownSql();
    const std::lock_guard<std::mutex> lock(known.mutex);
    known.all.erase(this);
}

std::vector<std::string> Sql::all()
{
    KnownSql& known = knownSql();
    const std::lock_guard<std::mutex> lock(known.mutex);
    std::vector<std::string> texts;
    for (const Sql* sql : known.all)
        texts.push_back(*sql);
    return texts;
}

} // namespace centre
