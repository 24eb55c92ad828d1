#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Records.h"

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
    refuse("'" + text + "' is not a date: write it as in 2024-07-31, 20240731 or 2024/07/31");
}

void readDates(const std::string& fromText, const std::string& toText, tagQueryCondition& condition)
{
    const QDate from = fromText.empty() ? QDate() : parseDate(fromText);
    const QDate to = toText.empty() ? QDate() : parseDate(toText);
    if (from.isValid() && to.isValid() && from > to)
        refuse("--from " + fromText + " is later than --to " + toText);
    condition.startDate = QString::fromStdString(fromText);
    condition.endDate = QString::fromStdString(toText);
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
        refuse("'" + text +
               "' is not a list of bounds: write WEST,SOUTH,EAST,NORTH in degrees, as in 85,27.5,87,29");
    if (!(west >= -180 && west <= 180 && east >= -180 && east <= 180 && south >= -90 && south <= 90 &&
          north >= -90 && north <= 90)) {
        refuse("'" + text +
               "' is outside the earth's coordinates: WEST and EAST are from -180 to 180 degrees, SOUTH and "
               "NORTH "
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

/// The library recognises the kind of a type by its name in GBK, whatever the code page of records.
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

    /// Searches type after type, until there are more records than the limit.
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
        // The types have these names, so the conditions are not needed again; the library would compare them
        // in the code page of C strings, which is not that of records.
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
                     "): its name does not decide the kind of its records");
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

    static QList<tagImageData> marked(const QList<tagImageData>& hits, const RecordList& withMark)
    {
        std::set<unsigned int> ids;
        for (std::size_t i = 0; i < withMark.size; ++i)
            ids.insert(keyOf(withMark.at(i)));
        QList<tagImageData> marked;
        for (const tagImageData& hit : hits)
            if (ids.count(keyOf(fieldsOf(hit))) > 0)
                marked.append(hit);
        return marked;
    }

    /// The project's own name, since the copy in the record of a type may be cut short.
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

class SearchCommand : public Command
{
public:
    explicit SearchCommand(CLI::App& app)
    {
        const auto condition = [&app](const char* name, std::string& value, const char* text,
                                      const char* description) {
            app.add_option(name, value, description)->option_text(text);
        };
        m_Records.addCsvAndLimit(app);
        condition("--project", m_Project, "PROJECT", "In this project: its identifier or its name");
        condition("--type", m_Type, "TYPENAME", "In types of this name");
        condition("--sensor", m_Sensor, "NAME", "Made by this sensor");
        condition("--from", m_From, "DATE", "Not before this day: 2024-07-31, 20240731, 2024/07/31");
        condition("--to", m_To, "DATE", "Not after this day");
        condition("--bounds", m_Bounds, "WEST,SOUTH,EAST,NORTH", "Touching these bounds, in degrees");
        condition("--mark", m_Mark, "MARK", "With this mark, its identifier");
        explain(app, "A record is found when it fits all conditions that are given.");
    }

    void check(Options& options) override
    {
        m_Records.apply(options);
        m_Condition.dataType = QString::fromStdString(m_Type);
        m_Condition.senType = QString::fromStdString(m_Sensor);
        readDates(m_From, m_To, m_Condition);
        if (!m_Bounds.empty())
            readBounds(m_Bounds, m_Condition);
        m_MarkID = m_Mark.empty() ? kNone : parseIdentifier(m_Mark, "mark");
    }

    void run(Session& session) override
    {
        RecordLists found = Search(session, m_Condition, m_MarkID).run(m_Project, m_Records.limit);
        limit(found, m_Records.limit);
        printRecords(found, m_Records.form);
    }

private:
    RecordOptions m_Records;
    std::string m_Project;
    std::string m_Type;
    std::string m_Sensor;
    std::string m_From;
    std::string m_To;
    std::string m_Bounds;
    std::string m_Mark;
    tagQueryCondition m_Condition;
    unsigned int m_MarkID = kNone;
};

} // namespace

void addSearch(CommandSet& commands)
{
    commands.add<SearchCommand>("search", "Find images, products and control points by conditions");
}

} // namespace cli
