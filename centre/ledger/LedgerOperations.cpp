#include "centre/ledger/LedgerOperations.h"

#include "centre/ledger/AnnotationOperations.h"
#include "centre/ledger/ImageOperations.h"
#include "centre/store/Ownership.h"
#include "lumo/core/LumoDataTypes.h"

#include <array>
#include <iterator>

namespace centre {

namespace {

const std::string kDisks = "SELECT disk.id, root_path, disk.name, ref_id, kesta_code FROM disk ";
const std::string kFolderColumns = "SELECT folder.id, parent_id, name, long_text, short_text, disk_id ";
const std::string kFolders = kFolderColumns + "FROM folder ";
const std::string kFileColumns = "SELECT file.id, parent_id, name, short_text, long_text ";
const std::string kFiles = kFileColumns + "FROM file ";

const std::string kPage = pageLimit();

const std::string kVersion =
    "SELECT name AS version_text_1, versionno AS version_text_2, app_full_path, released AS version_text_4,"
    " kesta_code AS version_text_5, notes AS version_text_6 FROM version ";
const std::string kOfProgram = "WHERE kind = 1 AND number = :programno ";
const std::string kOfModule = "WHERE kind = 2 AND number = :moduleno ";
const std::string kLatest = "ORDER BY place DESC LIMIT 1";

} // namespace

std::string pageLimit()
{
    return " LIMIT CASE WHEN :page_size < 100000 THEN :page_size ELSE 100000 END OFFSET "
           "coalesce(:page_start, "
           "0)";
}

namespace {

/// Disks, folders and files.
std::vector<Operation> storageOperations(const Dialect& dialect)
{
    const std::string foldersOfProject =
        "FROM data_folder JOIN folder ON folder.id = src_id"
        " JOIN comment_record ON comment_id = :comment_id AND data_type_id = " +
        std::to_string(DATA_TYPE_FOLDER) + " AND record_id = src_id WHERE project_id = :project_id AND " +
        readable("project", ":project_id") + "AND " + readable("folder", "folder.id");
    const std::string filesOfProject =
        "FROM data_file JOIN file ON file.id = file_id"
        " JOIN comment_record ON comment_id = :comment_id AND data_type_id = " +
        std::to_string(DATA_TYPE_FILE) + " AND record_id = file_id WHERE project_id = :project_id AND " +
        readable("project", ":project_id") + "AND " + readable("file", "file.id");
    // The top folders of all disks have parent 0.
    const std::string foldersIn = "FROM folder WHERE parent_id = :parent_src_id AND (" +
                                  readable("folder", ":parent_src_id") + "OR :parent_src_id = 0 AND " +
                                  readable("disk", "folder.disk_id") + ") ";
    const std::string filesIn = "FROM file WHERE parent_id = :src_id AND " + readable("folder", ":src_id");
    return {
        {"queryDataAddressByID", Shape::Record,
         kDisks + "WHERE id = :record_id AND " + readable("disk", ":record_id")},
        {"queryDataAddressByName", Shape::Record,
         kDisks + "WHERE name = :name AND " + readableOfCompany("disk") +
             "ORDER BY company_id <> :caller_company, id"},
        {"queryDataAddress", Shape::List,
         kDisks + "WHERE address_kind = :address_kind AND " + readableOfCompany("disk") + "ORDER BY id"},

        {"querySrcTableBySrcId", Shape::Record,
         kFolders + "WHERE id = :src_id AND " + readable("folder", ":src_id")},
        {"querySrcTableByUniqueness", Shape::Record,
         kFolders + "WHERE disk_id = :disk_id AND parent_id = :parent_src_id AND name = :srcname AND " +
             readable("disk", ":disk_id")},
        {"querySrcTableByParentSrcIdTotal", Shape::Values, kCount + foldersIn},
        {"querySrcTableByParentSrcId", Shape::Page, kFolderColumns + foldersIn + "ORDER BY id" + kPage},
        {"querySrcTableByProjectIDAndCommentIdTotal", Shape::Values, kCount + foldersOfProject},
        {"querySrcTableByProjectIDAndCommentIdForPage", Shape::Page,
         kFolderColumns + foldersOfProject + "ORDER BY src_id" + kPage},
        {"getFolderFullPath", Shape::Values,
         "SELECT folder_path(id) AS full_path, folder_box(id) AS kesta_code FROM folder WHERE id = :src_id "
         "AND " +
             readable("folder", ":src_id")},

        {"queryFileTableByFileId", Shape::Record,
         kFiles + "WHERE id = :file_id AND " + readable("file", ":file_id")},
        {"queryFileTableByFilePathId", Shape::List,
         kFileColumns + "FROM " + dialect.wantedIds(":list_file_id") +
             " AS wanted JOIN file ON file.id = wanted.value WHERE " + readable("file", "file.id") +
             "ORDER BY wanted.key"},
        {"queryFileTableByName", Shape::Record, kFileColumns + filesIn + "AND name = :filename"},
        {"queryFileTableBySrcIdTotal", Shape::Values, kCount + filesIn},
        {"queryFileTableBySrcId", Shape::Page, kFileColumns + filesIn + "ORDER BY id" + kPage},
        {"queryFileTableByProjectIDAndCommentIdTotal", Shape::Values, kCount + filesOfProject},
        {"queryFileTableByProjectIDAndCommentIdForPage", Shape::Page,
         kFileColumns + filesOfProject + "ORDER BY file_id" + kPage},
        {"getFileFullPath", Shape::Values,
         "SELECT rtrim(folder_path(parent_id), '/') || '/' || name AS full_path,"
         " folder_box(parent_id) AS kesta_code FROM file WHERE id = :file_id AND " +
             readable("file", ":file_id")},
    };
}

/// Companies, users, areas and versions.
std::vector<Operation> directoryOperations()
{
    return {
        {"queryCompanyTableByCompanyNo", Shape::Record,
         "SELECT id, companyno FROM company WHERE companyno = :companyno AND " + readableCompany()},
        {"queryUserTableByUserName", Shape::Record,
         "SELECT id, username FROM \"user\" WHERE username = :username AND company_id = :caller_company"},
        {"queryCompanyTableByCompanyID", Shape::Record,
         "SELECT id, companyno FROM company WHERE id = :company_id AND " + readableCompany()},
        {"queryNationalAreaByAreaID", Shape::List,
         "SELECT area_id, area_name FROM national_area WHERE area_id = :area_id OR parent_id = :area_id"
         " ORDER BY area_id <> :area_id, area_id"},

        {"queryVersionByVersionNoAndProgramNo", Shape::Record,
         kVersion + kOfProgram + "AND versionno = :versionno"},
        {"queryVersionByVersionNoAndModuleNo", Shape::Record,
         kVersion + kOfModule + "AND versionno = :versionno"},
        {"checkNewVersion", Shape::Record, kVersion + kOfProgram + kLatest},
        {"checkNewVersionByModuleNo", Shape::Record, kVersion + kOfModule + kLatest},
    };
}

} // namespace

std::vector<Operation> ledgerOperations(const Dialect& dialect)
{
    std::vector<Operation> all = storageOperations(dialect);
    for (std::vector<Operation>& more : std::array{directoryOperations(), imageOperations(dialect),
                                                   searchOperations(dialect), annotationOperations()})
        std::move(more.begin(), more.end(), std::back_inserter(all));
    return all;
}

} // namespace centre
