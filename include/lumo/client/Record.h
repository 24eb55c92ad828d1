#ifndef LUMO_CLIENT_RECORD_H
#define LUMO_CLIENT_RECORD_H

#include "lumo/client/Id.h"
#include "lumo/components/platform/Export.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace lumo {

/// A record of the image catalogue: its kind, and its fields by name, as docs/lumo.md lists them. A field
/// that the centre did not send is absent.
class LUMO_EXPORT Record
{
public:
    enum class Kind
    {
        Disk,
        Folder,
        File,
        Project,
        Type,
        Photo,     ///< a frame photograph
        Satellite, ///< a satellite image
        Ads,       ///< an airborne three-line image
        Control,   ///< a control file
        Point,     ///< a control point
        Dem,
        Dsm,
        Dom,
        Dlg
    };

    /// The value of a field that has none. A number of the coordinate settings is 0 instead: it is not known
    /// whether the centre has sent it.
    struct Absent
    {
    };
    /// The value of a text that the centre has but the library's record can't hold.
    struct TooLong
    {
    };
    /// A number with a meaning, in English.
    struct Code
    {
        int number;
        const char* meaning;
    };
    /// An unsigned number is an identifier.
    using Value = std::variant<Absent, TooLong, std::string, unsigned int, int, double, Code>;

    struct Field
    {
        enum class Role
        {
            Leading, ///< an identifier or the name: what identifies the record
            Main,
            Detail ///< of no use in a table
        };

        const char* name;
        Value value;
        Role role;
    };

    Record(Kind kind, std::vector<Field> fields) : m_Kind(kind), m_Fields(std::move(fields)) {}

    Kind kind() const { return m_Kind; }
    /// All fields, in the order that every record of the kind has.
    const std::vector<Field>& fields() const& { return m_Fields; }
    const std::vector<Field>& fields() const&& = delete; ///< they go with the record
    /// The value of a field; null when the kind has no such field.
    const Value* find(const std::string& name) const;
    /// The text, identifier or number of a field as it is; none when it is absent or of another type.
    template <class T>
    std::optional<T> get(const std::string& name) const
    {
        const Value* const value = find(name);
        const T* const known = value == nullptr ? nullptr : std::get_if<T>(value);
        return known == nullptr ? std::nullopt : std::optional<T>(*known);
    }

    /// The identifier of a record but a project and a type; it is the first field.
    RecordId id() const { return RecordId(firstNumber()); }
    ProjectId projectId() const { return ProjectId(get<unsigned int>("projectID").value_or(kNoIdentifier)); }
    TypeId typeId() const { return TypeId(get<unsigned int>("typeID").value_or(kNoIdentifier)); }
    FileId mainFileId() const { return FileId(get<unsigned int>("mainFileID").value_or(kNoIdentifier)); }

    /// The names of the fields that every record of a kind has, in their order; none for disk, folder and
    /// file.
    static std::vector<const char*> fieldNames(Kind kind);
    /// The word for a kind, such as "sat".
    static const char* word(Kind kind);
    /// The kind of a word; none for an unknown one.
    static std::optional<Kind> kindOf(const std::string& word);
    /// The kinds of the image catalogue, in their order: all but disk, folder and file.
    static const std::vector<Kind>& imageKinds();

private:
    unsigned int firstNumber() const;

    Kind m_Kind;
    std::vector<Field> m_Fields;
};

} // namespace lumo

#endif
