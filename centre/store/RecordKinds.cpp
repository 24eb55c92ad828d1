#include "centre/store/RecordKinds.h"

#include "ledgerserver.pb.h"

#include <algorithm>
#include <strings.h>

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

/// As the library's conversions of beans read the fields.
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
        return identifier(name, "file(id)", false);
    if (name == "company_id")
        return identifier(name, "company(id)", true);
    if (name == "project_id")
        return identifier(name, "project(project_id)", true);
    if (name == "dq_con_id")
        return identifier(name, "control(dq_con_id)", true);
    const Content content = contentOf(name);
    return {name, keyOf(name), content, "", content == Content::Name};
}

/// What a record that belongs to a type has beside its bean's fields. It stands before them, where a long
/// row is read first.
std::vector<Column> searchColumns()
{
    return {identifier("type_id", "type(type_id)", true),    {"sensor", "sensor", Content::Text, "", false},
            {"date", "date", Content::Date, "", false},      {"west", "west", Content::Degrees, "", false},
            {"south", "south", Content::Degrees, "", false}, {"east", "east", Content::Degrees, "", false},
            {"north", "north", Content::Degrees, "", false}};
}

RecordKind makeKind(const std::string& name, const std::string& stem, int number, const std::string& typeName,
                    const Descriptor* bean)
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

std::string table(const RecordKind& kind)
{
    const std::string& id = kind.idColumn();
    std::string sql = "CREATE TABLE " + kind.name + " (\n    " + id + " INTEGER PRIMARY KEY CHECK (" + id +
                      " BETWEEN 1 AND 4294967294)";
    for (std::size_t i = 1; i < kind.columns.size(); ++i) {
        const Column& column = kind.columns[i];
        sql += ",\n    " + column.name + sqlType(column.content) + (column.required ? " NOT NULL" : "");
        if (!column.references.empty())
            sql += " REFERENCES " + column.references;
    }
    if (kind.name == "project")
        sql += ",\n    UNIQUE (company_id, project_name)";
    if (kind.name == "type")
        sql += ",\n    UNIQUE (project_id, data_type)";
    return sql + ");\n";
}

/// An index ends with the row's identifier, so that of the owner holds its records in the order of pages.
/// The index of the bounds rounds them outward; in the table they are exact.
std::string indexes(const RecordKind& kind)
{
    const std::string create = "CREATE INDEX " + kind.name;
    if (kind.name == "project")
        return create + "_page ON project(company_id);\n";
    if (kind.name == "type")
        return create + "_page ON type(project_id);\n";
    if (kind.name == "point")
        return create + "_page ON point(dq_con_id);\n";
    return create + "_page ON " + kind.name + "(type_id);\n" + create + "_sensor ON " + kind.name +
           "(type_id, sensor, date);\n" + create + "_date ON " + kind.name +
           "(type_id, date);\nCREATE VIRTUAL TABLE " + kind.name +
           "_bounds USING rtree(id, west, east, south, north);\n";
}

} // namespace

const std::vector<RecordKind>& recordKinds()
{
    using namespace ledgerserver;
    static const std::vector<RecordKind> kinds = {
        makeKind("project", "", 3, "", DataSrcBean::descriptor()),
        makeKind("type", "Type", 4, "", DataSrcTypeBean::descriptor()),
        makeKind("photo", "Photo", 5, "框幅式影像", DataSrcPhotoBean::descriptor()),
        makeKind("sat", "Sat", 6, "卫星影像", DataSrcSatBean::descriptor()),
        makeKind("ads", "Ads", 7, "航空三线阵影像", DataSrcAdsBean::descriptor()),
        makeKind("control", "Control", 8, "控制点属性", DataSrcControlBean::descriptor()),
        makeKind("point", "ControlInfo", 9, "", DataSrcControlInfoBean::descriptor()),
        makeKind("dem", "Dem", 10, "DEM", DataSrcDemBean::descriptor()),
        makeKind("dsm", "Dsm", 11, "DSM", DataSrcDsmBean::descriptor()),
        makeKind("dom", "Dom", 12, "DOM", DataSrcDomBean::descriptor()),
        makeKind("dlg", "Dlg", 13, "DLG", DataSrcDlgBean::descriptor()),
    };
    return kinds;
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

std::string recordTables()
{
    std::string sql;
    for (const RecordKind& kind : recordKinds())
        sql += table(kind) + indexes(kind);
    return sql +
           "CREATE TABLE image_mark (\n    comm_id INTEGER NOT NULL,\n    data_type_id INTEGER NOT NULL,\n"
           "    record_id INTEGER NOT NULL,\n    PRIMARY KEY (comm_id, data_type_id, record_id))"
           " WITHOUT ROWID;\n";
}

} // namespace centre
