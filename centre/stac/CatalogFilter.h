#ifndef LUMO_CENTRE_STAC_CATALOGFILTER_H
#define LUMO_CENTRE_STAC_CATALOGFILTER_H

#include "centre/store/RecordKinds.h"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace centre {

// A filter of a search is an expression of CQL2, as JSON: comparisons, IN, IS NULL, AND, OR and NOT of the
// properties "sensor", "project", "collection", "id" and "datetime" with texts and times.

/// Returns an expression in the text form of CQL2 in its JSON form. Throws HttpError(400) for other texts.
nlohmann::json filterFromText(const std::string& text);

/// Returns the expression for an object of STAC's query extension, {"sensor": {"eq": "PMS-1"}}. Throws
/// HttpError(400).
nlohmann::json filterFromQuery(const nlohmann::json& query);

/// A filter as a condition of SQL.
struct FilterSql
{
    std::string condition;                                       ///< with parameters :value1, :value2 ...
    std::vector<std::pair<std::string, std::string>> parameters; ///< their names and values
};

/// Returns the condition for the records of a kind. It also has the parameters :project and :collection, the
/// name of the project and the collection's identifier, if it needs them. Throws HttpError(400) for what is
/// not an expression as above.
FilterSql filterSql(const nlohmann::json& filter, const RecordKind& kind);

} // namespace centre

#endif
