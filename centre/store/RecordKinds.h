#ifndef LUMO_CENTRE_STORE_RECORDKINDS_H
#define LUMO_CENTRE_STORE_RECORDKINDS_H

#include <google/protobuf/descriptor.h>

#include <string>
#include <vector>

namespace centre {

/// What stands in a column, and so what a text for it may be.
enum class Content
{
    Identifier, ///< 1 to 4294967294
    Name,       ///< a text that is never absent or empty
    Text,
    Number, ///< a text that clients read as a number
    Count,  ///< the same, a whole number
    Code,   ///< a text of which clients know a few
    Date,   ///< YYYY-MM-DD
    Degrees ///< a longitude or latitude
};

struct Column
{
    std::string name;
    std::string key; ///< in texts of records: imageName, mainFileID, coordParam1
    Content content;
    std::string references; ///< table and column that an identifier points to; empty: to none
    bool required;
};

/// A kind of record of the image catalogue. Its table bears the kind's name and has a column for each field
/// of the bean that clients read, named as it; the first is the record's identifier.
struct RecordKind
{
    std::string name;
    std::string stem;     ///< its name in the names of operations
    int number;           ///< as data_type_id in requests and links
    std::string typeName; ///< data_type of the types that own records of the kind; empty: no type does
    const google::protobuf::Descriptor* bean;
    std::vector<Column> columns;

    const std::string& idColumn() const { return columns.front().name; }
    /// Belongs to a type; has sensor, date, bounds and its place in the search.
    bool hasType() const { return !typeName.empty(); }
};

/// All kinds; a kind stands behind those that its records refer to.
const std::vector<RecordKind>& recordKinds();

/// The kind of that name, or null.
const RecordKind* findKind(const std::string& name);

/// Whether a type of that name owns records of the kind. Names of products are Latin and match in any case.
bool owns(const std::string& typeName, const RecordKind& kind);

/// The columns that go into the bean, separated by commas, each with its table.
std::string beanColumns(const RecordKind& kind);

/// Tables and indexes of all kinds, with their marks and bounds.
std::string recordTables();

} // namespace centre

#endif
