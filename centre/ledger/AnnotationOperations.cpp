#include "centre/ledger/AnnotationOperations.h"

#include "centre/store/Ownership.h"
#include "centre/store/RecordKinds.h"

namespace centre {

namespace {

const std::string kContentAndState = "commentcontent = coalesce(:commentcontent, '')"
                                     " AND commentstate = coalesce(:commentstate, '')";
const std::string kImageComments = "SELECT id, commentcontent, commentstate FROM image_comment ";

} // namespace

std::vector<Operation> annotationOperations()
{
    const std::string projects = "SELECT " + beanColumns(*findKind("project")) + " FROM ";
    const std::string comments = "SELECT id, commentcontent, commentstate FROM comment ";
    const std::string ofCompany = "WHERE company_id = :company_id AND company_id = :caller_company ";
    return {
        {"queryDataSrcBySrcId", Shape::List,
         projects + "data_folder JOIN project USING (project_id) WHERE src_id = :src_id AND " +
             readable("folder", ":src_id") + "AND " + readable("project", "project.project_id") +
             "ORDER BY project_id"},
        {"queryDataSrcByFileId", Shape::List,
         projects + "data_file JOIN project USING (project_id) WHERE file_id = :file_id AND " +
             readable("file", ":file_id") + "AND " + readable("project", "project.project_id") +
             "ORDER BY project_id"},

        {"queryCommentInfoByID", Shape::Record,
         comments + "WHERE id = :record_id AND company_id = :caller_company"},
        {"queryCommentInfo", Shape::List, comments + ofCompany + "ORDER BY id"},
        {"queryCommentContents", Shape::Values,
         "SELECT commentcontent AS commentcontents FROM comment " + ofCompany +
             "GROUP BY commentcontent ORDER BY min(id)"},
        {"queryCommentStateByCommentContent", Shape::Values,
         "SELECT commentstate AS commentstates FROM comment WHERE company_id = :caller_company"
         " AND commentcontent = :commentcontent ORDER BY id"},
        {"queryCommentID", Shape::Values, "SELECT id FROM comment " + ofCompany + "AND " + kContentAndState},

        {"queryCommentImageByCommID", Shape::Record,
         kImageComments + "WHERE id = :comment_id AND " + readableImageComment()},
        {"queryCommentImage", Shape::List,
         kImageComments + "WHERE " + readableImageComment() + "ORDER BY id"},
        {"queryCommentImageByContentAndState", Shape::Record,
         kImageComments + "WHERE " + kContentAndState + " AND " + readableImageComment() + "ORDER BY id"},
    };
}

} // namespace centre
