#include "centre/content/Sample.h"

#include "centre/content/BulkInsertion.h"
#include "centre/store/Store.h"

#include <QDate>

#include <algorithm>
#include <iterator>
#include <random>
#include <vector>

namespace centre {

namespace {

struct SampleProject
{
    const char* name;
    std::uint32_t percent; ///< its share of the images
    double longitude;      ///< of its middle
    double latitude;
};

constexpr SampleProject kProjects[] = {{"华北平原测图", 50, 116, 38}, {"长江三角洲更新", 20, 120, 31.5},
                                       {"青藏高原高程", 12, 91, 33},  {"珠江口海岸带", 8, 113.5, 22},
                                       {"天山北坡资源", 6, 86, 44},   {"太平洋岛礁", 4, 179.5, -17}};

struct SampleKind
{
    const char* kind;
    std::uint32_t percent;
    std::vector<std::string> sensors;
    const char* prefix; ///< of names
};

const std::vector<SampleKind>& sampleKinds()
{
    static const std::vector<SampleKind> kinds = {
        {"sat", 80, {"PMS-1", "PMS-2", "NAD-3", "MUX-3", "SAR-1", "全色", "多光谱"}, "SCN"},
        {"photo", 8, {"CAM-100", "CAM-250", "航摄仪"}, "航片"},
        {"ads", 4, {"TLS-40", "TLS-80"}, "条带"},
        {"dem", 2, {"LIDAR-1", "匹配"}, "DEM"},
        {"dsm", 2, {"LIDAR-1", "匹配"}, "DSM"},
        {"dom", 2, {"PMS-1", "CAM-250"}, "正射"},
        {"dlg", 2, {"测图"}, "线划"}};
    return kinds;
}

const std::vector<std::string> kPlaces = {"东部丘陵", "西部山地", "南岸",      "北岸",
                                          "城区",     "水库",     "Test field"};

/// Draws the same on every machine, which the standard distributions do not promise.
class Draw
{
public:
    explicit Draw(std::uint64_t seed) : m_Engine(seed) {}

    std::uint64_t below(std::uint64_t limit) { return m_Engine() % limit; }
    bool oneIn(std::uint64_t count) { return below(count) == 0; }
    template <class List>
    const auto& oneOf(const List& list)
    {
        return list[below(std::size(list))];
    }
    /// A decimal number with four digits after the point.
    std::string decimal(double least, double most)
    {
        const double value = least + (most - least) * static_cast<double>(below(1000001)) / 1000000;
        char text[32];
        static_cast<void>(std::snprintf(text, sizeof(text), "%.4f", value));
        return text;
    }
    std::string padded(std::uint64_t number, int digits)
    {
        char text[32];
        static_cast<void>(
            std::snprintf(text, sizeof(text), "%0*llu", digits, static_cast<unsigned long long>(number)));
        return text;
    }
    /// The first element whose share holds a draw of 100.
    template <class List>
    const auto& byPercent(const List& list)
    {
        std::uint64_t draw = below(100);
        auto each = std::begin(list);
        for (; draw >= each->percent; ++each)
            draw -= each->percent;
        return *each;
    }

private:
    std::mt19937_64 m_Engine;
};

class Sampler
{
public:
    Sampler(Store& store, std::uint64_t seed, const std::function<void(std::uint64_t)>& progress)
        : m_Draw(seed), m_Insertion(store.database(), progress)
    {
        const auto files = store.database().prepare("SELECT id FROM file ORDER BY id LIMIT 10000");
        while (files->step())
            m_Files.push_back(files->string(0));
    }

    RecordCounts run(const std::string& companyNo, std::uint32_t images)
    {
        for (const SampleProject& project : kProjects)
            addProject(project, companyNo);
        const std::vector<SampleKind>& kinds = sampleKinds();
        for (std::uint32_t i = 0; i < images; ++i) // each kind once, whatever the number
            addImage(i < kinds.size() ? kinds[i] : m_Draw.byPercent(kinds), i);
        for (std::uint32_t i = 0; i < std::size(kProjects) + images / 500; ++i)
            addControl(i);
        return m_Insertion.finish();
    }

private:
    using TypeIds = std::map<std::string, std::string>; ///< by kind

    void addProject(const SampleProject& project, const std::string& companyNo)
    {
        m_Texts = {{"projectName", project.name}, {"company", companyNo}};
        fill("project");
        const std::string id = add("project");
        TypeIds& types = m_Types[&project];
        for (const RecordKind& kind : recordKinds()) {
            if (!kind.hasType())
                continue;
            m_Texts = {{"projectID", id}, {"dataType", kind.typeName}, {"typeText", "第1版"}};
            types[kind.name] = add("type");
        }
    }

    void addImage(const SampleKind& kind, std::uint32_t number)
    {
        const SampleProject& project = m_Draw.byPercent(kProjects);
        place(project, kind.kind);
        m_Texts.emplace_back("imageName",
                             kind.prefix + ("_" + m_Draw.padded(number, 7)) + "_" + m_Texts.back().second);
        if (!m_Draw.oneIn(50))
            m_Texts.emplace_back("sensor", m_Draw.oneOf(kind.sensors));
        if (m_Draw.oneIn(20))
            m_Texts.emplace_back("marks", m_Draw.oneIn(4) ? "1,2" : std::to_string(1 + m_Draw.below(5)));
        fill(kind.kind);
        add(kind.kind);
    }

    void addControl(std::uint32_t number)
    {
        place(kProjects[number % std::size(kProjects)], "control");
        m_Texts.emplace_back("ctrlFileName", "控制点_" + m_Draw.padded(number, 5) + ".txt");
        fill("control");
        const std::string id = add("control");
        const std::uint64_t points = 10 + m_Draw.below(21);
        for (std::uint64_t i = 1; i <= points; ++i) {
            m_Texts = {{"dqConID", id},
                       {"conNumber", "K" + m_Draw.padded(i, 4)},
                       {"pointX", m_Draw.decimal(2000000, 5000000)},
                       {"pointY", m_Draw.decimal(300000, 700000)},
                       {"pointText", m_Draw.oneOf(kPlaces) + "，道路交叉口"}};
            if (!m_Draw.oneIn(10))
                m_Texts.emplace_back("pointZ", m_Draw.decimal(0, 5000));
            add("point");
        }
    }

    /// Begins a record of the project with its type, bounds and, last, its date.
    void place(const SampleProject& project, const std::string& kind)
    {
        const double west = project.longitude + static_cast<double>(m_Draw.below(6000)) / 1000 - 3;
        const double south = project.latitude + static_cast<double>(m_Draw.below(6000)) / 1000 - 3;
        const double width = 0.05 + static_cast<double>(m_Draw.below(400)) / 1000;
        const auto longitude = [](double value) { return std::to_string(value > 180 ? value - 360 : value); };
        m_Texts = {{"typeID", m_Types[&project][kind]},
                   {"west", longitude(west)},
                   {"south", std::to_string(south)},
                   {"east", longitude(west + width)},
                   {"north", std::to_string(south + width)}};
        if (!m_Files.empty())
            m_Texts.emplace_back("mainFileID", m_Draw.oneOf(m_Files));
        const QDate first(2015, 1, 1);
        m_Texts.emplace_back(
            "date",
            first.addDays(static_cast<qint64>(m_Draw.below(4000))).toString(Qt::ISODate).toStdString());
    }

    /// Makes up the texts of the record's bean that it does not have yet. One record of eight gets gaps.
    void fill(const std::string& kindName)
    {
        const bool gaps = m_Draw.oneIn(8);
        for (const Column& column : findKind(kindName)->columns) {
            const auto isColumn = [&column](const auto& text) { return text.first == column.key; };
            if (!isFilled(column) || std::any_of(m_Texts.begin(), m_Texts.end(), isColumn))
                continue;
            std::string value = madeUp(column);
            if (!gaps || !m_Draw.oneIn(4))
                m_Texts.emplace_back(column.key, std::move(value));
        }
    }

    static bool isFilled(const Column& column)
    {
        switch (column.content) {
        case Content::Text:
            return column.key != "sensor";
        case Content::Number:
        case Content::Count:
        case Content::Code:
            return true;
        default:
            return false;
        }
    }

    std::string madeUp(const Column& column)
    {
        if (column.content == Content::Code)
            return m_Draw.oneOf(codeTexts(column.name));
        if (column.content == Content::Count)
            return std::to_string(m_Draw.below(30000));
        if (column.content == Content::Number)
            return column.name.rfind("coord_", 0) == 0 ? m_Draw.decimal(-1000, 1000) : m_Draw.decimal(0, 100);
        if (column.name == "coord_text")
            return "三度带，中央经线 " + std::to_string(75 + 3 * m_Draw.below(20)) + "E";
        if (column.name == "text1" || column.name == "text2")
            return m_Draw.oneOf(kPlaces) + " " + std::to_string(m_Draw.below(1000));
        return "T" + std::to_string(m_Draw.below(1000)); // fits the narrowest field of a record
    }

    std::string add(const std::string& kind)
    {
        return std::to_string(m_Insertion.add(*findKind(kind), m_Texts));
    }

    Draw m_Draw;
    BulkInsertion m_Insertion;
    std::vector<std::string> m_Files;
    std::map<const SampleProject*, TypeIds> m_Types;
    RecordTexts m_Texts; ///< of the record under way
};

} // namespace

RecordCounts addSample(Store& store, const std::string& companyNo, std::uint32_t images, std::uint64_t seed,
                       const std::function<void(std::uint64_t)>& progress)
{
    store.companyId(companyNo); // throws if there is no such company
    return Sampler(store, seed, progress).run(companyNo, images);
}

} // namespace centre
