#ifndef LUMO_CLIENT_IMAGES_H
#define LUMO_CLIENT_IMAGES_H

#include "lumo/client/Entry.h"
#include "lumo/client/Record.h"
#include "lumo/components/platform/Export.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumo {

namespace internal {
class Link;
}

/// The image catalogue: projects, their types, and the images, products and control data of a type. A light
/// handle that may be copied and used from any thread; each member asks the centre and returns when it has
/// answered. After the session has closed every member throws Error (Closed). All throw Error (NoAnswer,
/// Refused) when a request fails, those that name one record Error (NotFound).
class LUMO_EXPORT Images
{
public:
    using Kind = Record::Kind;

    explicit Images(std::shared_ptr<internal::Link> link);

    /// Those of the company.
    std::vector<Record> projects() const;
    Record project(ProjectId id) const;
    /// The project of that identifier or, where there is none, of that name.
    Record project(const std::string& name) const;

    std::vector<Record> types(ProjectId project) const;
    Record type(TypeId id) const;
    Record type(ProjectId project, const std::string& name) const;
    /// The type of a text: its identifier, or its project and its name as in "north/DEM".
    Record type(const std::string& name) const;
    /// Throws Error (WrongUse) for a text of another form; asks nobody.
    static void checkTypeName(const std::string& name);
    /// The kind of the records of a type, which its name decides; none when it does not.
    static std::optional<Kind> kindOfType(const Record& type);
    /// The names of types that decide a kind.
    static std::vector<std::string> decidingNames();

    /// A record of any kind but disk, folder and file.
    Record record(Kind kind, RecordId id) const;
    /// The records of a type; throws Error (WrongUse) when its name decides no kind.
    std::vector<Record> records(const Record& type) const;
    /// All of a kind in a project; with `mark` those that have it. Throws Error (WrongUse) for a kind of
    /// which there is no such list.
    std::vector<Record> records(Kind kind, ProjectId project, CommentId mark = {}) const;
    static bool canList(Kind kind);
    static bool canBeMarked(Kind kind);
    /// Throws Error (WrongUse) for a kind of which there is no list in a project; asks nobody.
    static void checkList(Kind kind, bool marked);
    std::vector<Record> points(RecordId control) const;

    /// What a search asks for; what is empty asks for nothing.
    struct Search
    {
        std::string project; ///< its identifier or its name
        std::string type;    ///< its name
        std::string sensor;
        std::string from; ///< a day, as in 2024-07-31, 20240731 or 2024/07/31
        std::string to;
        /// West, south, east and north in degrees. Bounds across the 180th meridian take two searches.
        struct Bounds
        {
            double west, south, east, north;
        };
        std::optional<Bounds> bounds;
        CommentId mark;
    };
    /// Throws Error (WrongUse) for what can't be searched for; asks nobody.
    static void check(const Search& search);
    /// The types in which a search would look. One whose name decides no kind is among them.
    std::vector<Record> types(const Search& search) const;
    /// What a search finds in a type: records of its kind, or the points of its control files.
    std::vector<Record> search(const Search& search, const Record& type) const;
    /// What it finds in all types, those left out whose name decides no kind.
    std::vector<Record> search(const Search& search) const;

    /// The fields of a new record by name, such as imageName and value1.
    using Fields = std::vector<std::pair<std::string, std::string>>;
    /// Throws Error (WrongUse) for what can't be registered: a value with a comma, with a quote after an
    /// equals sign or with a NUL character, or one that is not UTF-8. Asks nobody.
    static void check(const Fields& fields);
    /// Registers a record and returns its identifier. A project belongs to the user's company unless its
    /// fields say otherwise. Throws Error (WrongUse) when a field is missing that its kind needs.
    RecordId add(Kind kind, const Fields& fields) const;
    /// Registers records of a kind in one call, all or none.
    std::vector<RecordId> addAll(Kind kind, const std::vector<Fields>& records) const;

    /// Links a project and a disk (its top folder), a folder or a file.
    void link(ProjectId project, const Entry& entry) const;
    /// Throws Error (NotFound) when they are not linked.
    void unlink(ProjectId project, const Entry& entry) const;
    /// The first project that it is linked to; throws Error (NotFound).
    Record projectOf(const Entry& entry) const;

private:
    std::shared_ptr<internal::Link> m_Link;
};

} // namespace lumo

#endif
