#ifndef LUMO_CENTRE_STORE_RECORDKINDS_H
#define LUMO_CENTRE_STORE_RECORDKINDS_H

#include "centre/database/Dialect.h"
#include "lumo/core/LumoDataTypes.h"

#include <google/protobuf/descriptor.h>

#include <string>
#include <vector>

namespace centre {

/// The content of a column, which decides which texts it takes.
enum class Content
{
    Identifier, ///< 1 to 4294967294
    Name,       ///< a text that is never absent or empty, and unique within the record's owner
    Text,
    Number, ///< a text that clients read as a number
    Count,  ///< the same, a whole number
    Code,   ///< one of codeTexts
    Date,   ///< YYYY-MM-DD
    Degrees ///< a longitude or latitude
};

struct Column
{
    std::string name;
    std::string key; ///< in texts of records: imageName, mainFileID, coordParam1
    Content content;
    std::string references; ///< the table that an identifier points to; empty: none
    bool required;
};

/// A kind of record of the image catalogue. Its table has the kind's name, and a column for each field of the
/// bean that clients read, with the field's name. The first column is the record's identifier.
struct RecordKind
{
    std::string name;
    std::string stem;      ///< the kind in the names of operations
    ENUM_DATA_TYPE number; ///< the data_type_id of requests and links
    std::string typeName;  ///< data_type of the types that own records of the kind; empty: no type does
    const google::protobuf::Descriptor* bean;
    std::vector<Column> columns;

    const std::string& idColumn() const { return columns.front().name; }
    /// The column that refers to the record's owner: company, project, type or control file.
    const Column& owner() const;
    /// The column of the record's name, or null.
    const Column* nameColumn() const;
    /// Whether its records may have a main file.
    bool hasMainFile() const;
    /// Whether its records belong to a type: these have sensor, date and bounds, and a search finds them.
    bool hasType() const { return !typeName.empty(); }
};

/// All kinds, each after those that its records refer to.
const std::vector<RecordKind>& recordKinds();

/// Returns the kind of that name, or null.
const RecordKind* findKind(const std::string& name);

/// Whether a type of that name owns records of the kind. The case of Latin letters does not matter.
bool owns(const std::string& typeName, const RecordKind& kind);

/// The texts of a code that clients know, by its column: datum, projection, hemisphere.
const std::vector<std::string>& codeTexts(const std::string& column);

/// Returns the columns that go into the bean, separated by commas, each with its table.
std::string beanColumns(const RecordKind& kind);

/// Returns the SQL that makes the tables and indexes of all kinds, with their bounds and marks.
std::string recordTables(const Dialect& dialect);
/// Returns the SQL that makes the indexes by which the records of a main file are found.
std::string mainFileIndexes();

} // namespace centre

#endif
