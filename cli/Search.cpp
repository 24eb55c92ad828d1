#include "cli/Commands.h"

#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/Records.h"

#include "lumo/catalog/QueryCondition.h"
#include "lumo/components/platform/CodePage.h"
#include "lumo/core/LumoDataMgr.h"

#include <QDate>

#include <charconv>
#include <cstring>
#include <map>
#include <set>

namespace cli {

namespace {

/// A day of the calendar in one of the forms that the centre reads; it goes there as it was typed.
QDate parseDate(const std::string& text)
{
    for (const char* const form : {"yyyy-MM-dd", "yyyyMMdd", "yyyy/MM/dd"}) {
        const QDate date = QDate::fromString(QString::fromStdString(text), form);
        if (date.isValid())
            return date;
    }
    refuse("'" + text + "' is no date: write it as in 2024-07-31, 20240731 or 2024/07/31");
}

void readDates(const SearchRequest& request, tagQueryCondition& condition)
{
    const QDate from = request.from.empty() ? QDate() : parseDate(request.from);
    const QDate to = request.to.empty() ? QDate() : parseDate(request.to);
    if (from.isValid() && to.isValid() && from > to)
        refuse("--from " + request.from + " is later than --to " + request.to);
    condition.startDate = QString::fromStdString(request.from);
    condition.endDate = QString::fromStdString(request.to);
}

void readBounds(const std::string& text, tagQueryCondition& condition)
{
    double bounds[4] = {};
    const char* place = text.data();
    const char* const end = text.data() + text.size();
    bool read = true;
    for (int i = 0; i < 4 && read; ++i) {
        const auto [stop, error] = std::from_chars(place, end, bounds[i]);
        read = error == std::errc() && (i == 3 ? stop == end : stop != end && *stop == ',');
        place = stop + 1;
    }
    const auto [west, south, east, north] = bounds;
    if (!read)
        refuse("'" + text + "' are no bounds: write WEST,SOUTH,EAST,NORTH in degrees, as in 85,27.5,87,29");
    if (!(west >= -180 && west <= 180 && east >= -180 && east <= 180 && south >= -90 && south <= 90 &&
          north >= -90 && north <= 90)) {
        refuse("'" + text +
               "' lies off the earth: WEST and EAST are from -180 to 180 degrees, SOUTH and NORTH "
               "from -90 to 90");
    }
    if (south > north)
        refuse("SOUTH is north of NORTH in '" + text + "': the order is WEST,SOUTH,EAST,NORTH");
    if (west > east) {
        refuse("WEST is east of EAST in '" + text +
               "': the order is WEST,SOUTH,EAST,NORTH; bounds across the 180th meridian take two searches");
    }
    condition.useBounds = true;
    condition.boundA = west;
    condition.boundB = south;
    condition.boundC = east;
    condition.boundD = north;
}

/// The library tells the kind of a type from its name in GBK, whatever the code page of records.
void setNameInGbk(tagTypeTable& type, const char* name)
{
    std::memset(type.dataType, 0, sizeof type.dataType);
    platform::recode(platform::kUtf8CodePage, platform::kGbkCodePage, name, std::strlen(name), type.dataType,
                     sizeof type.dataType - 1);
}

/// The identifier of a record, its first field.
unsigned int keyOf(const Fields& fields)
{
    const auto* const key = std::get_if<unsigned int>(&fields.front().value);
    return key == nullptr ? kNone : *key;
}

class Search
{
public:
    /// `mark`: kNone for any and none.
    Search(Session& session, const tagQueryCondition& condition, unsigned int mark)
        : m_Session(session), m_Condition(condition), m_Mark(mark)
    {
    }

    /// Asks type after type, until there are more records than the limit.
    RecordLists run(const std::string& project, std::size_t limit)
    {
        RecordLists found;
        found.commonNames = {"kind", "project", "type"};
        found.whenEmpty = "(nothing found)";
        std::size_t records = 0;
        for (const tagTypeTable& type : types(project)) {
            if (records > limit)
                break;
            RecordList list = searchType(type);
            records += list.size;
            if (list.size > 0)
                found.lists.push_back(std::move(list));
        }
        return found;
    }

private:
    QList<tagTypeTable> types(const std::string& project)
    {
        if (!project.empty()) {
            const tagDataTable found = findProject(m_Session, project);
            const Text& name = m_ProjectNames[found.projectID] = textOf(recordText(found.projectName));
            m_Condition.projectName = QString::fromStdString(name.value_or(project));
        }
        QList<tagTypeTable> types;
        answered(m_Session, m_Session.manager.searchDataType(m_Condition, types));
        // The types bear these names, so that they need not be asked for again; the library would compare
        // them in the code page of C strings, in which records are not.
        m_Condition.projectName.clear();
        m_Condition.dataType.clear();
        return types;
    }

    RecordList searchType(tagTypeTable type)
    {
        const Text typeName = textOf(recordText(type.dataType));
        const Text& project = projectName(type);
        const Kind* const kind = kindOfType(typeName);
        const std::string heading = shownName(project) + "/" + shownName(typeName);
        if (kind == nullptr) {
            complain("not searched: " + heading + " (type " + std::to_string(type.typeID) +
                     "), whose name tells no kind of records");
            return {};
        }
        // Control files and their points can't be asked for by a mark.
        if (m_Mark != kNone && kind->listMarked == nullptr)
            return {};
        setNameInGbk(type, kind->typeName);
        QList<tagImageData> hits;
        answered(m_Session, m_Session.manager.searchByDataType(type, m_Condition, hits));
        if (m_Mark != kNone && !hits.isEmpty())
            hits = marked(hits, kind->listMarked(m_Session, type.projectID, m_Mark));
        if (hits.isEmpty())
            return {};
        RecordList list = listOf(hits);
        // Types of control files are searched for their points.
        const bool points = hits.front().recordKind == DATA_TYPE_CTRL_POINT;
        list.common = {points ? "point" : kind->word, project.value_or(""), *typeName};
        list.heading = heading;
        return list;
    }

    static QList<tagImageData> marked(const QList<tagImageData>& hits, const RecordList& bearers)
    {
        std::set<unsigned int> bearing;
        for (std::size_t i = 0; i < bearers.size; ++i)
            bearing.insert(keyOf(bearers.at(i)));
        QList<tagImageData> marked;
        for (const tagImageData& hit : hits)
            if (bearing.count(keyOf(fieldsOf(hit))) > 0)
                marked.append(hit);
        return marked;
    }

    /// From the project itself, since that of a type may be cut short.
    const Text& projectName(const tagTypeTable& type)
    {
        const auto known = m_ProjectNames.find(type.projectID);
        if (known != m_ProjectNames.end())
            return known->second;
        const auto project = projectOf(m_Session, type.projectID);
        return m_ProjectNames[type.projectID] =
                   textOf(recordText(project ? project->projectName : type.projectName));
    }

    Session& m_Session;
    tagQueryCondition m_Condition;
    unsigned int m_Mark;
    std::map<unsigned int, Text> m_ProjectNames;
};

} // namespace

Action searchImages(const SearchRequest& request, const RecordOptions& options)
{
    tagQueryCondition condition;
    condition.dataType = QString::fromStdString(request.type);
    condition.senType = QString::fromStdString(request.sensor);
    readDates(request, condition);
    if (!request.bounds.empty())
        readBounds(request.bounds, condition);
    const unsigned int mark = request.mark.empty() ? kNone : parseIdentifier(request.mark, "mark");
    return [condition, mark, project = request.project, options](Session& session) {
        RecordLists found = Search(session, condition, mark).run(project, options.limit);
        limit(found, options.limit);
        printRecords(found, options.form);
    };
}

} // namespace cli
