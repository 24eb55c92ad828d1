#include "centre/ledger/ImageOperations.h"

#include "centre/ledger/LedgerOperations.h"
#include "centre/store/Ownership.h"
#include "centre/store/RecordKinds.h"

namespace centre {

namespace {

void addProjects(std::vector<Operation>& operations, const RecordKind& kind)
{
    const std::string projects = "SELECT " + beanColumns(kind) + " FROM project ";
    const std::string ofCompany = "WHERE " + readableOfCompany("project");
    operations.insert(
        operations.end(),
        {{"queryDataSrcByProjectID", Shape::Record,
          projects + "WHERE project_id = :project_id AND " + readable("project", ":project_id")},
         {"queryDataSrcByProjectName", Shape::Record,
          projects + ofCompany +
              "AND project_name = :proname ORDER BY company_id <> :caller_company, project_id"},
         {"queryDataSrcTotal", Shape::Values, kCount + "FROM project " + ofCompany},
         {"queryDataSrc", Shape::Page, projects + ofCompany + "ORDER BY project_id" + pageLimit()}});
}

void addTypes(std::vector<Operation>& operations, const RecordKind& kind)
{
    const std::string types =
        "SELECT " + beanColumns(kind) + ", project_name FROM type JOIN project USING (project_id) ";
    const std::string ofProject = "WHERE project_id = :project_id AND " + readable("project", ":project_id");
    operations.insert(
        operations.end(),
        {{"queryDataSrcTypeByTypeId", Shape::Record,
          types + "WHERE type_id = :type_id AND " + readable("type", ":type_id")},
         {"queryDataSrcTypeByTypeAndproId", Shape::Record, types + ofProject + "AND data_type = :data_type"},
         {"queryDataSrcTypeByProjectID", Shape::List, types + ofProject + "ORDER BY type_id"}});
}

void addPoints(std::vector<Operation>& operations, const RecordKind& kind)
{
    const std::string points = "SELECT " + beanColumns(kind) + " FROM point ";
    const std::string ofControl = "WHERE dq_con_id = :dqcon_id AND " + readable("control", ":dqcon_id");
    operations.insert(
        operations.end(),
        {{"queryDataSrcControlInfoById", Shape::Record,
          points + "WHERE point_id = :record_id AND " + readable("point", ":record_id")},
         {"queryDataSrcControlInfoByDqConIDTotal", Shape::Values, kCount + "FROM point " + ofControl},
         {"queryDataSrcControlInfoByDqConID", Shape::Page,
          points + ofControl + "ORDER BY point_id" + pageLimit()}});
}

/// Selects a page of the records that `from` selects in the order of an index: skips those before the page in
/// the index alone and reads only the rows of the page.
std::string pageOf(const RecordKind& kind, const std::string& from, const std::string& order)
{
    const std::string& id = kind.idColumn();
    return "SELECT " + beanColumns(kind) + " FROM " + kind.name + " WHERE " + id + " IN (SELECT " + id + " " +
           from + "ORDER BY " + order + pageLimit() + ") ORDER BY " + id;
}

void addOfType(std::vector<Operation>& operations, const RecordKind& kind, const Dialect& dialect)
{
    const std::string query = "queryDataSrc" + kind.stem;
    const std::string select = "SELECT " + beanColumns(kind) + " ";
    const std::string& table = kind.name;
    const std::string& id = kind.idColumn();
    const std::string join = dialect.orderedJoin + " ";
    const bool isControl = table == "control";
    const std::string record = isControl ? ":dqcon_id" : ":record_id";
    const std::string ofType =
        "FROM " + table + " WHERE type_id = :type_id AND " + readable("type", ":type_id");
    // Goes from the types to their records, both in the order of an index.
    const std::string ofProject = "FROM type " + join + table +
                                  " USING (type_id) WHERE project_id = :project_id AND " +
                                  readable("project", ":project_id");
    operations.insert(
        operations.end(),
        {{query + (isControl ? "ByDqConID" : "ById"), Shape::Record,
          select + "FROM " + table + " WHERE " + id + " = " + record + " AND " + readable(table, record)},
         {query + "ByTypeIDTotal", Shape::Values, kCount + ofType},
         {query + "ByTypeID", Shape::Page, pageOf(kind, ofType, id)},
         {query + "ByProjectIDTotal", Shape::Values, kCount + ofProject},
         {query + "ByProjectID", Shape::Page, pageOf(kind, ofProject, "type.type_id, " + id)}});
    if (!isControl)
        operations.push_back({query + "ByProjectIDAndCommID", Shape::List,
                              select + "FROM image_mark " + join + table + " ON " + id + " = record_id " +
                                  join + "type USING (type_id) WHERE comm_id = :comm_id AND data_type_id = " +
                                  std::to_string(kind.number) + " AND project_id = :project_id AND " +
                                  readable("project", ":project_id") + "ORDER BY record_id"});
}

} // namespace

std::vector<Operation> imageOperations(const Dialect& dialect)
{
    std::vector<Operation> operations;
    for (const RecordKind& kind : recordKinds())
        if (kind.hasType())
            addOfType(operations, kind, dialect);
        else
            (kind.name == "project" ? addProjects
             : kind.name == "type"  ? addTypes
                                    : addPoints)(operations, kind);
    return operations;
}

} // namespace centre
