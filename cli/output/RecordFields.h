#ifndef LUMO_CLI_OUTPUT_RECORDFIELDS_H
#define LUMO_CLI_OUTPUT_RECORDFIELDS_H

#include "cli/Catalogue.h"
#include "cli/output/Output.h"

#include "lumo/catalog/ImageData.h"

#include <string>
#include <variant>
#include <vector>

namespace cli {

/// A text as a record holds it: in the system code page. One that is too long for the record leaves its bytes
/// as they were; since any other ends in NUL, a last byte that was not NUL before tells it.
struct RecordText
{
    const char* bytes;
    std::size_t capacity;
};

template <std::size_t Size>
RecordText recordText(const char (&field)[Size])
{
    return {field, Size};
}

/// A code and what it means.
struct Code
{
    int value;
    const char* meaning;
};

struct Absent
{
};

/// Absent stands for a key of 0xFFFFFFFF, a code that is not set, and a number whose presence bit is clear.
using Value = std::variant<Absent, unsigned int, RecordText, double, int, Code>;

/// A field of a record by its name; the record must outlive it.
struct Field
{
    enum class Role
    {
        Leading, ///< a key or the record's name: what tells it from others
        Main,
        Detail ///< of no use in a table
    };

    const char* name;
    Value value;
    Role role;
};

using Fields = std::vector<Field>;

/// The one description of the image catalogue's records: all fields in their order, but `presence` and
/// `ctrlFile`.
Fields fieldsOf(const tagDataTable& record);
Fields fieldsOf(const tagTypeTable& record);
Fields fieldsOf(const tagKFImageTable& record);
Fields fieldsOf(const tagSatTable& record);
Fields fieldsOf(const tagAdsTable& record);
Fields fieldsOf(const tagCtrlFileTable& record);
Fields fieldsOf(const tagCtrlPointTable& record);
Fields fieldsOf(const tagDemTable& record);
Fields fieldsOf(const tagDsmTable& record);
Fields fieldsOf(const tagDomTable& record);
Fields fieldsOf(const tagDlgTable& record);
/// The fields of the record that it holds.
Fields fieldsOf(const tagImageData& record);

/// UTF-8; none for a text too long for its record.
Text textOf(const RecordText& text);

/// For people, not yet escaped: codes with their meaning, what is absent or empty as "-".
std::string shown(const Value& value);
/// What is absent is null, and so is a text too long for its record.
Json jsonOf(const Value& value);
/// For CSV, not yet quoted; what is null in JSON is empty.
std::string plain(const Value& value);

} // namespace cli

#endif
