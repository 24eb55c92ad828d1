#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/ImageNames.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/FeatureOutput.h"
#include "cli/output/Records.h"

#include <charconv>

namespace cli {

namespace {

lumo::Images::Search::Bounds parseBounds(const std::string& text)
{
    double bounds[4] = {};
    const char* place = text.data();
    const char* const end = text.data() + text.size();
    bool valid = true;
    for (int i = 0; i < 4 && valid; ++i) {
        const auto [stop, error] = std::from_chars(place, end, bounds[i]);
        valid = error == std::errc() && (i == 3 ? stop == end : stop != end && *stop == ',');
        place = stop + 1;
    }
    if (!valid) {
        refuse("'" + text +
               "' is not a list of bounds: write WEST,SOUTH,EAST,NORTH in degrees, as in 85,27.5,87,29");
    }
    return {bounds[0], bounds[1], bounds[2], bounds[3]};
}

/// The name of a type's project: its own, since the copy in the record of a type may be cut short.
lumo::Entry::Text projectName(const lumo::Images& images, const lumo::Record& type)
{
    try {
        return images.project(type.projectId()).get<std::string>("projectName");
    } catch (const lumo::Error& error) {
        if (error.kind() != lumo::Error::Kind::NotFound)
            throw;
        return type.get<std::string>("projectName");
    }
}

class SearchCommand : public Command
{
public:
    explicit SearchCommand(CLI::App& app)
    {
        m_Records.addCsvAndLimit(app);
        addFlag(app, "--geojson", m_IsGeoJson,
                "A GeoJSON FeatureCollection with the footprints; takes precedence over --csv");
        addOption(app, "--project", m_Search.project, "PROJECT", "In the project of this identifier or name");
        addOption(app, "--type", m_Search.type, "TYPENAME", "In types of this name");
        addOption(app, "--sensor", m_Search.sensor, "NAME", "Made by this sensor");
        addOption(app, "--from", m_Search.from, "DATE",
                  "Not before this day: 2024-07-31, 20240731, 2024/07/31");
        addOption(app, "--to", m_Search.to, "DATE", "Not after this day");
        addOption(app, "--bounds", m_Bounds, "WEST,SOUTH,EAST,NORTH", "Touching these bounds, in degrees");
        addOption(app, "--mark", m_Mark, "MARK", "With the mark of this identifier");
        explain(app, "A record is found when it fits all conditions that are given.");
    }

    void check(Options& options) override
    {
        m_Records.apply(options);
        if (!m_Bounds.empty())
            m_Search.bounds = parseBounds(m_Bounds);
        if (!m_Mark.empty())
            m_Search.mark = lumo::CommentId(parseIdentifier(m_Mark, "mark"));
        lumo::Images::check(m_Search);
    }

    /// Searches type after type, until there are more records than the limit.
    void run(lumo::Session& session, bool /*json*/) override
    {
        const lumo::Images images = session.images();
        RecordLists found;
        found.commonNames = {"kind", "project", "type"};
        found.whenEmpty = "(nothing found)";
        std::size_t count = 0;
        for (const lumo::Record& type : images.types(m_Search)) {
            if (count > m_Records.limit)
                break;
            RecordList list = searchType(images, type);
            count += list.records.size();
            if (!list.records.empty())
                found.lists.push_back(std::move(list));
        }
        limit(found, m_Records.limit);
        if (m_IsGeoJson)
            printFeatures(found, session.catalogue());
        else
            printRecords(found, m_Records.form);
    }

private:
    RecordList searchType(const lumo::Images& images, const lumo::Record& type) const
    {
        const bool hasKind = lumo::Images::kindOfType(type).has_value();
        std::vector<lumo::Record> hits;
        if (hasKind)
            hits = images.search(m_Search, type);
        if (hasKind && hits.empty())
            return {};
        const auto name = type.get<std::string>("dataType");
        const lumo::Entry::Text project = projectName(images, type);
        const std::string heading = shownName(project) + "/" + shownName(name);
        if (!hasKind) {
            complain("not searched: " + heading + " (type " + std::to_string(type.typeId().number()) +
                     "): its name does not decide the kind of its records");
            return {};
        }
        const lumo::Record::Kind kind = hits.front().kind();
        RecordList list = listOf(kind, std::move(hits));
        list.common = {lumo::Record::word(kind), project.value_or(""), *name};
        list.heading = heading;
        return list;
    }

    RecordOptions m_Records;
    bool m_IsGeoJson = false;
    std::string m_Bounds;
    std::string m_Mark;
    lumo::Images::Search m_Search;
};

} // namespace

void addSearch(CommandSet& commands)
{
    commands.add<SearchCommand>("search", "Find images, products and control points by conditions");
}

} // namespace cli
