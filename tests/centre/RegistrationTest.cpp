#include "centre/ledger/AssignmentText.h"
#include "centre/store/RecordKinds.h"
#include "tests/centre/CentreSupport.h"

using centre::RecordKind;
using testing::HasSubstr;

namespace {

TEST(AssignmentText, IsTakenApart)
{
    const struct
    {
        std::string text;
        centre::RecordTexts parts; ///< empty: refused
    } cases[] = {
        {"a='1',b='二'", {{"a", "1"}, {"b", "二"}}},
        {"a=''", {{"a", ""}}},
        {"a='1', b='2'", {{"a", "1"}, {" b", "2"}}},
        {"a='1',a='2'", {{"a", "2"}}},
        {"a='it's'", {{"a", "it's"}}},
        {"a='b='c'", {{"a='b", "c"}}},
        {"a='b='", {{"a", "b="}}},
        {"a='1'rest", {{"a", "1"}}},
        {"='1'", {{"", "1"}}},
        {"a\n='1\n'", {{"a\n", "1\n"}}},
        {std::string(1 << 20, '\''), {}},
        {"=" + std::string(1 << 20, '\''), {{"", std::string((1 << 20) - 2, '\'')}}},
        {"", {}},
        {"a='1',", {}},
        {"a='1,2'", {}},
        {"a=1", {}},
        {"a='", {}},
        {"a=''',b", {}},
        {"a='\xff'", {}},
    };
    for (const auto& each : cases) {
        const std::string shown = each.text.substr(0, 40);
        if (each.parts.empty())
            EXPECT_THROW(centre::parseAssignments(each.text), centre::Error) << shown;
        else
            EXPECT_EQ(centre::parseAssignments(each.text), each.parts) << shown;
    }
}

class Registrations : public CentreTest
{
protected:
    Registrations()
    {
        m_Store.addMadeUpFiles(m_Store.addDisk("disk", "/srv/a", "LUMO"), 1);
        serve();
    }

    std::string save(int kind, const std::string& text)
    {
        ledgerserver::DataUtilBeanReq request;
        request.set_data_type_id(kind);
        request.mutable_checkdatabean()->set_sqldata(text);
        return ask("saveSingleDataByType", request.DebugString());
    }

    std::string saveBoth(int kind, const std::string& first, const std::string& second)
    {
        ledgerserver::DataUtilBeanReq request;
        request.set_data_type_id(kind);
        request.add_checkdatabeans()->set_sqldata(first);
        request.add_checkdatabeans()->set_sqldata(second);
        return ask("saveFullDataByType", request.DebugString());
    }
};

TEST_F(Registrations, MakeARecordOfEachKindThatQueriesSeeAtOnce)
{
    EXPECT_EQ(save(3, "companyID='1',projectName='P'"), "result: 0 id: 1");
    int lastType = 0;
    for (const RecordKind& kind : centre::recordKinds()) {
        if (!kind.hasType())
            continue;
        const std::string typeId = std::to_string(++lastType);
        EXPECT_EQ(save(4, "projectID='1',dataType='" + kind.typeName + "'"), "result: 0 id: " + typeId);
        EXPECT_EQ(saveBoth(kind.number,
                           "mainFileID='1',typeID='" + typeId +
                               "',sensor='S',date='2026-01-31',west='1',south='2',east='3',"
                               "north='4',text1='it's',value1=' -.5 m',datum='西安80'",
                           "mainFileID='',value1='',datum='',typeID='" + typeId + "'"),
                  "result: 0 id_list: 1 id_list: 2")
            << m_Errors;
        if (kind.name == "control") {
            EXPECT_EQ(save(9, "dqConID='1',conNumber='K-1'"), "result: 0 id: 1") << m_Errors;
            continue;
        }
        EXPECT_THAT(ask("searchDataByType" + kind.stem,
                        "type_id: " + typeId +
                            " sentype: 'S' start_date: '2026-01-31' end_date: '2026-01-31' use_bounds: true"
                            " bound_a: 3 bound_b: 4 bound_c: 5 bound_d: 6"),
                    testing::AllOf(testing::StartsWith("result: 0 "), HasSubstr("image_id: 1"),
                                   HasSubstr("text1: \"it\\'s\""), testing::Not(HasSubstr("image_id: 2"))));
    }
    EXPECT_EQ(ask("addCommentImage", "commentcontent: 'x'"), "result: 0 id: 1");
    EXPECT_EQ(ask("addCommentImage", "commentcontent: 'y'"), "result: 0 id: 2");
    EXPECT_EQ(save(6, "typeID='2',mainFileID='1',marks='2 1'"), "result: 0 id: 3");
    EXPECT_EQ(ask("queryDataSrcSatByProjectIDAndCommID", "project_id: 1 comm_id: 1"),
              "result: 0 datasrcsats { image_id: 3 main_file_id: 1 }");
}

TEST_F(Registrations, OfLongTextsAreRefusedInAFewWords)
{
    std::string keys = "typeID='1'";
    for (int i = 0; i < 1000; ++i)
        keys += ",key" + std::to_string(i) + "='v'";
    for (const auto& [text, reason] :
         {std::pair(keys, "has no key 'key0'"),
          {std::string(1 << 20, '\''), "a record must be key='value',key='value', not"}}) {
        EXPECT_EQ(save(6, text), "result: -2");
        EXPECT_THAT(m_Errors, HasSubstr(reason));
        EXPECT_LT(m_Errors.size(), 1000u);
    }
}

} // namespace
