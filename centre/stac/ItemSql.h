#ifndef LUMO_CENTRE_STAC_ITEMSQL_H
#define LUMO_CENTRE_STAC_ITEMSQL_H

#include "centre/stac/ItemSearch.h"
#include "centre/store/Connection.h"
#include "centre/store/RecordKinds.h"

#include <memory>
#include <string>
#include <vector>

namespace centre {

/// The first columns of the select of items; those of `itemFields` follow.
enum ItemColumn
{
    kItemId,
    kWest,
    kSouth,
    kEast,
    kNorth,
    kSensor,
    kDate,
    kTitle,
    kMainFile,
    kFileName,
    kFileSize,
    kFileDigest,
    kFileFormat,
    kFilePlacement, ///< the reference system, and the bounds in it
    kFolder,
    kDisk,
    kFirstItemField
};

/// The columns of a kind that are properties as they are.
std::vector<const Column*> itemFields(const RecordKind& kind);

/// Returns the SQL that selects a page of a type's items that match a search, in the order of their records.
/// It has the parameters :type, :after and :limit, those of the search's conditions and of its filter.
std::string itemSql(const RecordKind& kind, const Dialect& dialect, const ItemSearch& search,
                    const std::string& filterCondition);

/// Sets the parameters of a search's conditions, as far as a statement has them. `ids` are those of the kind.
void bindSearch(Statement& statement, const ItemSearch& search, const Statement::Identifiers& ids);
/// Sets a parameter that a statement may have.
template <class Value>
void bindNamed(Statement& statement, const char* name, const Value& value)
{
    if (const int place = statement.parameter(name))
        statement.bind(place, value);
}

/// A statement that its connection keeps if its text is one of the first few hundred that are used.
class KeptStatement
{
public:
    KeptStatement(Connection& connection, const std::string& sql);
    Statement& operator*() { return *m_Statement; }

private:
    std::unique_ptr<Statement> m_Own;
    Statement* m_Statement;
};

} // namespace centre

#endif
