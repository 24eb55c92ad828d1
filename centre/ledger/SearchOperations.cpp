#include "centre/ledger/ImageOperations.h"

#include "centre/base/Date.h"
#include "centre/base/Text.h"
#include "centre/store/Ownership.h"
#include "centre/store/RecordKinds.h"
#include "ledgerserver.pb.h"

#include <stdexcept>

namespace centre {

namespace {

using ledgerserver::DataUtilBeanReq;

constexpr double kTurn = 360;
constexpr char kFirstDay[] = "0001-01-01";
constexpr char kLastDay[] = "9999-12-31";

// In a condition that is fit, a field without a condition is NULL, both dates are there or neither, and
// west <= east.

const std::string kInDates = "(:start_date IS NULL OR date BETWEEN :start_date AND :end_date) ";
const std::string kInBounds =
    "(:use_bounds IS NULL OR (south <= :bound_d AND north >= :bound_b AND"
    " (west <= :bound_c AND east >= :bound_a OR west <= :bound_c + 360 AND east >= :bound_a + 360"
    " OR west <= :bound_c - 360 AND east >= :bound_a - 360))) ";
const std::string kMatches = "(:sentype IS NULL OR sensor = :sentype) AND " + kInDates + "AND " + kInBounds;
const std::string kNamesMatch =
    "(:proname IS NULL OR project_name = :proname) AND (:data_type IS NULL OR data_type = :data_type"
    " OR (upper(:data_type) IN ('DEM', 'DSM', 'DOM', 'DLG') AND data_type = upper(:data_type))) ";

/// A condition on records of types, for one engine.
class Condition
{
public:
    explicit Condition(const Dialect& dialect)
        : m_Dialect(dialect), m_Types("FROM project " + dialect.orderedJoin + " type USING (project_id) ")
    {
    }

    std::string isHit(const RecordKind& kind) const;
    std::string searchOfTypes() const;

private:
    std::string inBounds(const RecordKind& kind) const;

    const Dialect& m_Dialect;
    const std::string m_Types;
};

/// Selects the identifiers of the kind's records in the bounds, with the index's precision.
std::string Condition::inBounds(const RecordKind& kind) const
{
    return m_Dialect.inBounds(kind.name, kind.idColumn()) + "AND :use_bounds IS NOT NULL ";
}

/// Identifiers of the type's records that match when no bounds are asked for, straight from the index that
/// fits the condition; the other selects end before they read anything.
std::string withoutBounds(const RecordKind& kind, const std::string& typeId)
{
    const std::string ids = "SELECT " + kind.idColumn() + " AS id FROM " + kind.name +
                            " WHERE :use_bounds IS NULL AND type_id = " + typeId + " ";
    return ids + "AND :sentype IS NOT NULL AND sensor = :sentype AND " + kInDates + "UNION ALL " + ids +
           "AND :sentype IS NULL AND :start_date IS NOT NULL AND date BETWEEN :start_date AND :end_date "
           "UNION ALL " +
           ids + "AND :sentype IS NULL AND :start_date IS NULL ";
}

/// The condition that a record of the request's type matches. The + keeps the search on the identifiers.
std::string Condition::isHit(const RecordKind& kind) const
{
    return kind.name + "." + kind.idColumn() + " IN (" + inBounds(kind) + "UNION ALL " +
           withoutBounds(kind, ":type_id") + ") AND +type_id = :type_id AND " + kMatches +
           "AND EXISTS (SELECT 1 " + m_Types + "WHERE type.type_id = :type_id AND " + kNamesMatch + ") AND " +
           readable("type", ":type_id");
}

/// Searches the bounds once for all types, and an index of the types once for each type.
std::string Condition::searchOfTypes() const
{
    std::string inBoundsOfAny;
    std::string byIndex;
    for (const RecordKind& kind : recordKinds()) {
        if (!kind.hasType())
            continue;
        inBoundsOfAny += (inBoundsOfAny.empty() ? "" : "UNION ALL ") +
                         ("SELECT type_id FROM (" + inBounds(kind)) + ") AS place " + m_Dialect.orderedJoin +
                         " " + kind.name + " ON " + kind.idColumn() + " = place.id WHERE " + kMatches;
        byIndex += " OR EXISTS (" + withoutBounds(kind, "type.type_id") + ")";
    }
    return "SELECT type.type_id, project_id, project_name, data_type, type_text " + m_Types + "WHERE " +
           readableOfCompany("project") + "AND " + kNamesMatch +
           "AND (:sentype IS NULL AND :start_date IS NULL AND :use_bounds IS NULL OR type.type_id IN (" +
           inBoundsOfAny + ")" + byIndex + ") ORDER BY type.type_id";
}

std::string day(const std::string& text, const char* none)
{
    if (text.empty())
        return none;
    if (auto date = isoDate(text))
        return *date;
    throw std::runtime_error("not a date: " + abbreviated(text));
}

void makeDatesFit(DataUtilBeanReq& request)
{
    if (request.start_date().empty() && request.end_date().empty()) {
        request.clear_start_date();
        request.clear_end_date();
        return;
    }
    request.set_start_date(day(request.start_date(), kFirstDay));
    request.set_end_date(day(request.end_date(), kLastDay));
}

void makeBoundsFit(DataUtilBeanReq& request)
{
    if (!request.use_bounds())
        return request.clear_use_bounds();
    if (!request.has_bound_a() || !request.has_bound_b() || !request.has_bound_c() || !request.has_bound_d())
        throw std::runtime_error("bounds need four numbers: west, south, east, north");
    const double west = request.bound_a();
    const double east = request.bound_c() < west ? request.bound_c() + kTurn : request.bound_c();
    // Written so that NaN fails.
    if (!(west <= east && request.bound_b() <= request.bound_d()))
        throw std::runtime_error("not valid bounds: west " + std::to_string(west) + ", south " +
                                 std::to_string(request.bound_b()) + ", east " +
                                 std::to_string(request.bound_c()) + ", north " +
                                 std::to_string(request.bound_d()));
    request.set_bound_c(east);
}

/// Makes the condition fit for the statements; throws std::runtime_error if it can't be one.
void makeConditionFit(google::protobuf::Message& message)
{
    auto& request = dynamic_cast<DataUtilBeanReq&>(message);
    if (request.proname().empty())
        request.clear_proname();
    if (request.data_type().empty())
        request.clear_data_type();
    if (request.sentype().empty())
        request.clear_sentype();
    makeDatesFit(request);
    makeBoundsFit(request);
}

} // namespace

std::vector<Operation> searchOperations(const Dialect& dialect)
{
    const Condition condition(dialect);
    std::vector<Operation> operations = {
        {"searchDataType", Shape::List, condition.searchOfTypes(), makeConditionFit}};
    for (const RecordKind& kind : recordKinds()) {
        if (!kind.hasType())
            continue;
        const RecordKind& found = kind.name == "control" ? *findKind("point") : kind;
        std::string sql = "SELECT " + beanColumns(found) + " FROM " + found.name + " WHERE ";
        sql += kind.name == "control" ? "point_id IN (SELECT point_id FROM control " + dialect.orderedJoin +
                                            " point USING (dq_con_id) WHERE " + condition.isHit(kind) + ") "
                                      : condition.isHit(kind);
        operations.push_back({"searchDataByType" + found.stem, Shape::List,
                              sql + "ORDER BY " + found.idColumn(), makeConditionFit});
    }
    return operations;
}

} // namespace centre
