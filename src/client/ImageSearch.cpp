#include "client/Link.h"
#include "client/RecordFields.h"
#include "client/RecordKinds.h"
#include "lumo/catalog/QueryCondition.h"
#include "lumo/client/Images.h"
#include "lumo/components/platform/CodePage.h"
#include "lumo/core/LumoDataMgr.h"

#include <QDate>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <set>

namespace lumo {

using internal::Call;
using internal::refuse;

namespace {

/// A day in one of the forms that the centre reads; not valid for no text.
QDate dateOf(const std::string& text)
{
    for (const char* const form : {"yyyy-MM-dd", "yyyyMMdd", "yyyy/MM/dd"}) {
        const QDate date = QDate::fromString(QString::fromStdString(text), form);
        if (date.isValid())
            return date;
    }
    if (!text.empty())
        refuse("'" + text + "' is not a date: write it as in 2024-07-31, 20240731 or 2024/07/31");
    return {};
}

void checkBounds(const Images::Search::Bounds& bounds)
{
    const auto within = [](double value, double limit) { return value >= -limit && value <= limit; };
    if (!within(bounds.west, 180) || !within(bounds.east, 180) || !within(bounds.south, 90) ||
        !within(bounds.north, 90)) {
        refuse("the bounds are off the earth: WEST and EAST are from -180 to 180 degrees, SOUTH and NORTH "
               "from -90 to 90");
    }
    if (bounds.south > bounds.north)
        refuse("SOUTH is north of NORTH: the order is WEST,SOUTH,EAST,NORTH");
    if (bounds.west > bounds.east) {
        refuse("WEST is east of EAST: the order is WEST,SOUTH,EAST,NORTH; bounds across the 180th meridian "
               "take two searches");
    }
}

tagQueryCondition conditionOf(const Images::Search& search)
{
    tagQueryCondition condition;
    condition.senType = QString::fromStdString(search.sensor);
    condition.startDate = QString::fromStdString(search.from);
    condition.endDate = QString::fromStdString(search.to);
    if (search.bounds) {
        condition.useBounds = true;
        condition.boundA = search.bounds->west;
        condition.boundB = search.bounds->south;
        condition.boundC = search.bounds->east;
        condition.boundD = search.bounds->north;
    }
    return condition;
}

/// What the manager needs of a type. It derives the kind from the name in GBK, whatever the code page of
/// records.
tagTypeTable sourceOf(const Record& type, const char* name)
{
    tagTypeTable source{};
    source.typeID = type.typeId().number();
    source.projectID = type.projectId().number();
    platform::recode(platform::kUtf8CodePage, platform::kGbkCodePage, name, std::strlen(name),
                     source.dataType, sizeof source.dataType - 1);
    return source;
}

void keepMarked(std::vector<Record>& hits, const std::vector<Record>& marked)
{
    std::set<RecordId> withMark;
    for (const Record& record : marked)
        withMark.insert(record.id());
    const auto unmarked = [&withMark](const Record& hit) { return withMark.count(hit.id()) == 0; };
    hits.erase(std::remove_if(hits.begin(), hits.end(), unmarked), hits.end());
}

} // namespace

void Images::check(const Search& search)
{
    const QDate from = dateOf(search.from);
    const QDate to = dateOf(search.to);
    if (from.isValid() && to.isValid() && from > to)
        refuse("the first day, " + search.from + ", is later than the last, " + search.to);
    if (search.bounds)
        checkBounds(*search.bounds);
}

std::vector<Record> Images::types(const Search& search) const
{
    check(search);
    tagQueryCondition condition = conditionOf(search);
    condition.dataType = QString::fromStdString(search.type);
    if (!search.project.empty()) {
        const auto name = project(search.project).get<std::string>("projectName");
        condition.projectName = QString::fromStdString(name.value_or(search.project));
    }
    const Call call(*m_Link);
    QList<tagTypeTable> types;
    call.answered(call->searchDataType(condition, types));
    return internal::recordsFrom(std::move(types));
}

std::vector<Record> Images::search(const Search& search, const Record& type) const
{
    check(search);
    const auto kind = kindOfType(type);
    if (!kind)
        refuse("the name '" + type.get<std::string>("dataType").value_or("") +
               "' decides no kind of records");
    // Control files and their points can't be asked for by a mark.
    if (search.mark.isSet() && !canBeMarked(*kind))
        return {};
    // Project and type are those of the search: the library would compare their names in the code page of C
    // strings, in which records are not.
    const Call call(*m_Link);
    QList<tagImageData> sources;
    call.answered(call->searchByDataType(sourceOf(type, internal::kindOf(*kind).typeName),
                                         conditionOf(search), sources));
    std::vector<Record> hits = internal::recordsFrom(std::move(sources));
    if (search.mark.isSet() && !hits.empty())
        keepMarked(hits, records(*kind, type.projectId(), search.mark));
    return hits;
}

std::vector<Record> Images::search(const Search& wanted) const
{
    std::vector<Record> found;
    for (const Record& type : types(wanted)) {
        if (!kindOfType(type))
            continue;
        std::vector<Record> hits = search(wanted, type);
        std::move(hits.begin(), hits.end(), std::back_inserter(found));
    }
    return found;
}

} // namespace lumo
