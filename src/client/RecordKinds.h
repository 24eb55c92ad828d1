#ifndef LUMO_CLIENT_RECORDKINDS_H
#define LUMO_CLIENT_RECORDKINDS_H

#include "client/Link.h"
#include "lumo/client/Record.h"
#include "lumo/core/LumoDataTypes.h"

#include <functional>
#include <optional>
#include <vector>

namespace lumo::internal {

/// A kind of record, and how the manager is asked for its records. A query that the manager does not have is
/// empty.
struct RecordKind
{
    using One = std::function<std::optional<Record>(const Call&, unsigned int)>;
    using List = std::function<std::vector<Record>(const Call&, unsigned int)>;
    using MarkedList = std::function<std::vector<Record>(const Call&, unsigned int, unsigned int)>;

    Record::Kind kind;
    const char* word; ///< as a user types it
    const char* name; ///< in messages
    ENUM_DATA_TYPE number;
    const char* typeName = nullptr; ///< of the types whose records are of this kind
    One one{};
    List below{};                 ///< of a type, a project or a control file
    List inProject{};             ///< all in a project
    MarkedList markedInProject{}; ///< by project and mark
    Record (*empty)() = nullptr;  ///< one without values
};

/// Those of the image catalogue first, in their order.
const std::vector<RecordKind>& recordKinds();
const RecordKind& kindOf(Record::Kind kind);

} // namespace lumo::internal

#endif
