#include "centre/store/RecordKinds.h"

#include "ledgerserver.pb.h"

#include <algorithm>
#include <strings.h>
#include <unordered_map>

namespace centre {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;

/// image_name is imageName in texts of records, main_file_id mainFileID.
std::string keyOf(const std::string& field)
{
    std::string key;
    for (std::size_t start = 0; start < field.size();) {
        const std::size_t end = std::min(field.find('_', start), field.size());
        std::string word = field.substr(start, end - start);
        if (word == "id")
            word = "ID";
        else if (start > 0)
            word.front() = static_cast<char>(word.front() - 'a' + 'A');
        key += word;
        start = end + 1;
    }
    return key;
}

Column identifier(const std::string& name, const std::string& references, bool required)
{
    return {name, keyOf(name), Content::Identifier, references, required};
}

/// Follows the library's conversions of beans.
Content contentOf(const std::string& name)
{
    const auto startsWith = [&name](const char* start) { return name.rfind(start, 0) == 0; };
    if (name == "project_name" || name == "data_type")
        return Content::Name;
    if (name == "datum" || name == "projection" || name == "hemisphere")
        return Content::Code;
    if (startsWith("count"))
        return Content::Count;
    if (startsWith("value") || startsWith("coord_param") || startsWith("coord_extra") || name == "point_x" ||
        name == "point_y" || name == "point_z")
        return Content::Number;
    return Content::Text;
}

Column beanColumn(const FieldDescriptor& field)
{
    const std::string& name = field.name();
    if (name == "main_file_id")
        return identifier(name, "file", false);
    if (name == "company_id")
        return identifier(name, "company", true);
    if (name == "project_id")
        return identifier(name, "project", true);
    if (name == "dq_con_id")
        return identifier(name, "control", true);
    const Content content = contentOf(name);
    return {name, keyOf(name), content, "", content == Content::Name};
}

/// The columns that a record of a type has in addition to its bean's fields. They come before these, where
/// SQLite reads a long row first.
std::vector<Column> searchColumns()
{
    return {identifier("type_id", "type", true),
            {"sensor", "sensor", Content::Text, "", false},
            {"date", "date", Content::Date, "", false},
            {"west", "west", Content::Degrees, "", false},
            {"south", "south", Content::Degrees, "", false},
            {"east", "east", Content::Degrees, "", false},
            {"north", "north", Content::Degrees, "", false}};
}

RecordKind makeKind(const std::string& name, const std::string& stem, ENUM_DATA_TYPE number,
                    const std::string& typeName, const Descriptor* bean)
{
    RecordKind kind{name, stem, number, typeName, bean, {}};
    kind.columns.push_back(identifier(bean->field(0)->name(), "", false));
    if (kind.hasType())
        for (Column& column : searchColumns())
            kind.columns.push_back(std::move(column));
    for (int i = 1; i < bean->field_count(); ++i) {
        const std::string& field = bean->field(i)->name();
        const bool isOfProject = name == "type" && field == "project_name";
        if (field.rfind("unread_", 0) != 0 && !isOfProject)
            kind.columns.push_back(beanColumn(*bean->field(i)));
    }
    return kind;
}

const char* sqlType(Content content)
{
    switch (content) {
    case Content::Identifier:
        return " INTEGER";
    case Content::Degrees:
        return " REAL";
    default:
        return " TEXT";
    }
}

std::string idColumnOf(const std::string& table)
{
    const RecordKind* kind = findKind(table);
    return kind ? kind->idColumn() : "id";
}

std::string table(const RecordKind& kind, const Dialect& dialect)
{
    const std::string& id = kind.idColumn();
    std::string sql = "CREATE TABLE " + kind.name + " (\n    " + id + " INTEGER PRIMARY KEY CHECK (" + id +
                      " BETWEEN 1 AND 4294967294)";
    for (std::size_t i = 1; i < kind.columns.size(); ++i) {
        const Column& column = kind.columns[i];
        sql += ",\n    " + column.name + sqlType(column.content) + (column.required ? " NOT NULL" : "");
        if (!column.references.empty())
            sql += " REFERENCES " + column.references + "(" + idColumnOf(column.references) + ")";
    }
    if (const Column* name = kind.nameColumn())
        sql += ",\n    UNIQUE (" + kind.owner().name + ", " + name->name + ")";
    if (kind.hasType() && !dialect.hasRowIds)
        sql += ",\n    bounds BOX GENERATED ALWAYS AS (box(point(west, south), point(east, north))) STORED";
    return sql + ");\n";
}

/// The index of the owner ends with the row's identifier, so it holds the owner's records in the order of
/// pages. The index of the bounds may find more than what touches them.
std::string indexes(const RecordKind& kind, const Dialect& dialect)
{
    const std::string create = "CREATE INDEX " + kind.name;
    std::string page = create + "_page ON " + kind.name + "(" + kind.owner().name +
                       (dialect.hasRowIds ? "" : ", " + kind.idColumn()) + ");\n";
    if (!kind.hasType())
        return page;
    const std::string bounds =
        dialect.hasRowIds
            ? "CREATE VIRTUAL TABLE " + kind.name + "_bounds USING rtree(id, west, east, south, north);\n"
            : create + "_bounds ON " + kind.name + " USING gist (bounds);\n";
    return page + create + "_sensor ON " + kind.name + "(type_id, sensor, date);\n" + create + "_date ON " +
           kind.name + "(type_id, date);\n" + bounds;
}

} // namespace

const std::vector<RecordKind>& recordKinds()
{
    using namespace ledgerserver;
    static const std::vector<RecordKind> kinds = {
        makeKind("project", "", DATA_TYPE_DATA, "", DataSrcBean::descriptor()),
        makeKind("type", "Type", DATA_TYPE_TYPE, "", DataSrcTypeBean::descriptor()),
        makeKind("photo", "Photo", DATA_TYPE_KF_IMAGE, "框幅式影像", DataSrcPhotoBean::descriptor()),
        makeKind("sat", "Sat", DATA_TYPE_SAT_IMAGE, "卫星影像", DataSrcSatBean::descriptor()),
        makeKind("ads", "Ads", DATA_TYPE_ADS_IMAGE, "航空三线阵影像", DataSrcAdsBean::descriptor()),
        makeKind("control", "Control", DATA_TYPE_CTRL_FILE, "控制点属性", DataSrcControlBean::descriptor()),
        makeKind("point", "ControlInfo", DATA_TYPE_CTRL_POINT, "", DataSrcControlInfoBean::descriptor()),
        makeKind("dem", "Dem", DATA_TYPE_DEM, "DEM", DataSrcDemBean::descriptor()),
        makeKind("dsm", "Dsm", DATA_TYPE_DSM, "DSM", DataSrcDsmBean::descriptor()),
        makeKind("dom", "Dom", DATA_TYPE_DOM, "DOM", DataSrcDomBean::descriptor()),
        makeKind("dlg", "Dlg", DATA_TYPE_DLG, "DLG", DataSrcDlgBean::descriptor()),
    };
    return kinds;
}

const Column& RecordKind::owner() const
{
    return *std::find_if(columns.begin(), columns.end(),
                         [](const Column& column) { return column.required && !column.references.empty(); });
}

const Column* RecordKind::nameColumn() const
{
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [](const Column& column) { return column.content == Content::Name; });
    return found == columns.end() ? nullptr : &*found;
}

bool RecordKind::hasMainFile() const
{
    return std::any_of(columns.begin(), columns.end(),
                       [](const Column& column) { return column.references == "file"; });
}

const std::vector<std::string>& codeTexts(const std::string& column)
{
    static const std::unordered_map<std::string, std::vector<std::string>> texts = {
        {"datum", {"WGS84", "北京54", "西安80", "中国2000", "自定义"}},
        {"projection", {"经纬度", "TM投影", "高斯投影", "UTM投影", "兰波特等角投影", "地心直角坐标"}},
        {"hemisphere", {"南半球", "北半球"}}};
    return texts.at(column);
}

const RecordKind* findKind(const std::string& name)
{
    for (const RecordKind& kind : recordKinds())
        if (kind.name == name)
            return &kind;
    return nullptr;
}

bool owns(const std::string& typeName, const RecordKind& kind)
{
    return kind.hasType() && ::strcasecmp(typeName.c_str(), kind.typeName.c_str()) == 0;
}

std::string beanColumns(const RecordKind& kind)
{
    std::string columns;
    for (const Column& column : kind.columns)
        if (kind.bean->FindFieldByName(column.name))
            columns += (columns.empty() ? "" : ", ") + kind.name + "." + column.name;
    return columns;
}

std::string recordTables(const Dialect& dialect)
{
    std::string sql;
    for (const RecordKind& kind : recordKinds())
        sql += table(kind, dialect) + indexes(kind, dialect);
    return sql +
           "CREATE TABLE image_mark (\n    comm_id INTEGER NOT NULL,\n    data_type_id INTEGER NOT NULL,\n"
           "    record_id INTEGER NOT NULL,\n    PRIMARY KEY (comm_id, data_type_id, record_id))"
           " WITHOUT ROWID;\n";
}

std::string mainFileIndexes()
{
    std::string sql;
    for (const RecordKind& kind : recordKinds())
        if (kind.hasMainFile())
            sql += "CREATE INDEX " + kind.name + "_main_file ON " + kind.name + "(main_file_id);\n";
    return sql;
}

} // namespace centre
