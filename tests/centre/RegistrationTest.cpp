#include "centre/content/LoadRecords.h"
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

class Registrations : public testing::Test
{
protected:
    Registrations()
    {
        m_Store.addCompany("other");
        m_Store.addMadeUpFiles(m_Store.addDisk("disk", "/srv/a", "LUMO"), 1);
        m_Store.addMadeUpFiles(m_Store.addDisk("disk", "/srv/b", "other"), 1);
        m_Store.database().exec("INSERT INTO project(company_id, project_name) VALUES (1, 'P'), (2, 'R');"
                                "INSERT INTO type(project_id, data_type) VALUES (2, '卫星影像')");
        m_Centre = std::make_unique<centre::Centre>(m_Data.path(), centre::ServeOptions());
        m_Channel = channelTo(m_Centre->address(), m_Data.token());
    }

    std::string save(int kind, const std::string& text)
    {
        ledgerserver::DataUtilBeanReq request;
        request.set_data_type_id(kind);
        request.mutable_checkdatabean()->set_sqldata(text);
        return call("saveSingleDataByType", request);
    }

    std::string saveAll(int kind, const std::vector<std::string>& texts)
    {
        ledgerserver::DataUtilBeanReq request;
        request.set_data_type_id(kind);
        for (const std::string& text : texts)
            request.add_checkdatabeans()->set_sqldata(text);
        return call("saveFullDataByType", request);
    }

    std::string call(const char* operation, const ledgerserver::DataUtilBeanReq& request)
    {
        std::string text;
        google::protobuf::TextFormat::PrintToString(request, &text);
        testing::internal::CaptureStderr();
        std::string answer = ask(*m_Channel, operation, text);
        m_Told = testing::internal::GetCapturedStderr();
        return answer;
    }

    DataFolder m_Data;
    centre::Store m_Store{m_Data.path()};
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    std::string m_Told;
};

TEST_F(Registrations, MakeARecordOfEachKindThatQueriesSeeAtOnce)
{
    EXPECT_EQ(save(3, "companyID='1',projectName='新',datum='WGS84'"), "result: 0 id: 3");
    EXPECT_EQ(ask(*m_Channel, "queryDataSrcByProjectName", "company_id: 1 proname: '新'"),
              "result: 0 bean { project_id: 3 project_name: \"新\" datum: \"WGS84\" company_id: 1 }");
    int lastType = 1;
    for (const RecordKind& kind : centre::recordKinds()) {
        if (!kind.hasType())
            continue;
        const std::string typeId = std::to_string(++lastType);
        EXPECT_EQ(save(4, "projectID='3',dataType='" + kind.typeName + "'"), "result: 0 id: " + typeId);
        EXPECT_EQ(saveAll(kind.number, {"mainFileID='1',typeID='" + typeId +
                                            "',sensor='S',date='2026-01-31',west='1',south='2',east='3',"
                                            "north='4',text1='it's',value1=' -.5 m',datum='西安80'",
                                        "mainFileID='',value1='',datum='',typeID='" + typeId + "'"}),
                  "result: 0 id_list: 1 id_list: 2")
            << m_Told;
        if (kind.name == "control") {
            EXPECT_EQ(save(9, "dqConID='1',conNumber='K-1'"), "result: 0 id: 1") << m_Told;
            continue;
        }
        EXPECT_THAT(ask(*m_Channel, "searchDataByType" + kind.stem,
                        "type_id: " + typeId +
                            " sentype: 'S' start_date: '2026-01-31' end_date: '2026-01-31' use_bounds: true"
                            " bound_a: 3 bound_b: 4 bound_c: 5 bound_d: 6"),
                    testing::AllOf(testing::StartsWith("result: 0 "), HasSubstr("image_id: 1"),
                                   HasSubstr("text1: \"it\\'s\""), testing::Not(HasSubstr("image_id: 2"))));
    }
    EXPECT_EQ(ask(*m_Channel, "addCommentImage", "commentcontent: 'x'"), "result: 0 id: 1");
    EXPECT_EQ(ask(*m_Channel, "addCommentImage", "commentcontent: 'y'"), "result: 0 id: 2");
    EXPECT_EQ(save(6, "typeID='3',mainFileID='1',marks='2 1'"), "result: 0 id: 3");
    EXPECT_EQ(ask(*m_Channel, "queryDataSrcSatByProjectIDAndCommID", "project_id: 3 comm_id: 1"),
              "result: 0 datasrcsats { image_id: 3 main_file_id: 1 }");
}

TEST_F(Registrations, AreRefusedAloneAndAsABatchWithTheReason)
{
    EXPECT_EQ(save(4, "projectID='1',dataType='卫星影像'"), "result: 0 id: 2");
    EXPECT_EQ(save(4, "projectID='1',dataType='Dom'"), "result: 0 id: 3");
    std::string keys = "typeID='2'";
    for (int i = 0; i < 1000; ++i)
        keys += ",key" + std::to_string(i) + "='v'";
    const std::string good = "typeID='2',mainFileID='1'";
    const struct
    {
        int kind;
        std::string text;
        std::string reason;
    } cases[] = {
        {6, good + ",imagename='x'", "a record of kind sat has no key 'imagename'"},
        {6, "typeID='2', mainFileID='1'", "has no key ' mainFileID'"},
        {6, keys, "has no key 'key0'"},
        {6, "typeID='9',mainFileID='1'", "there is no type 9"},
        {6, "mainFileID='1'", "typeID is missing"},
        {6, "typeID='2',mainFileID='9'", "there is no file 9"},
        {6, "typeID='2',mainFileID='A-17'", "mainFileID is a number from 1 to 4294967294, not 'A-17'"},
        {6, "typeID='2',mainFileID='2'", "file 2 is not of the company of user demo"},
        {6, "typeID='1',mainFileID='1'", "is not of the company of user demo"},
        {10, good, "type 2 is 卫星影像 and has no records of kind dem"},
        {6, good + ",marks='7'", "there is no image comment 7"},
        {6, good + ",date='soon'", "date is a day"},
        {6, good + ",imageID='4294967294'", "imageID is given by the centre"},
        {6, good + ",value1='abc'", "value1 is a number, not 'abc'"},
        {6, good + ",count1='.5'", "count1 is a number, not '.5'"},
        {6, good + ",coordParam8='-'", "coordExtra7 is a number, not '-'"},
        {6, good + ",hemisphere='north'", "hemisphere is one of 南半球, 北半球, not 'north'"},
        {6, good + std::string(",text1='a\0b'", 12), "without the character 0"},
        {6, std::string(1 << 20, '\''), "a record is key='value',key='value', not"},
        {6, "", "a record is key='value'"},
        {3, "companyID='2',projectName='X'", "is not of the company of user demo"},
        {3, "companyID='9',projectName='X'", "there is no company 9"},
        {3, "companyID='1',projectName='P'", "there is a project 'P' already"},
        {3, "companyID='1',projectName='X',projectID='9'", "projectID is given by the centre"},
        {4, "projectID='1',dataType='dOM'", "there is a type 'DOM' already"},
        {4, "projectID='9',dataType='DEM'", "there is no project 9"},
        {4, "projectID='2',dataType='DEM'", "is not of the company of user demo"},
        {9, "dqConID='9',conNumber='1'", "there is no control 9"},
        {2, good, "records of data type 2 can't be registered"},
        {14, good, "records of data type 14 can't be registered"},
    };
    for (const auto& each : cases) {
        const std::string shown = each.text.substr(0, 60);
        EXPECT_EQ(save(each.kind, each.text), "result: -2") << shown;
        EXPECT_THAT(m_Told, HasSubstr("saveSingleDataByType: ")) << shown;
        EXPECT_THAT(m_Told, HasSubstr(each.reason)) << shown;
        EXPECT_LT(m_Told.size(), 1000u) << shown;
        if (each.kind != 6)
            continue;
        EXPECT_EQ(saveAll(6, {good, each.text, good}), "result: -2") << shown;
        EXPECT_THAT(m_Told, HasSubstr("record 2 of 3: ")) << shown;
    }
    EXPECT_EQ(m_Store.database().execAndGet("SELECT count(*) FROM sat").getInt(), 0);
    EXPECT_EQ(saveAll(6, {}), "result: 0");
    m_Store.database().exec("INSERT INTO sat(image_id, type_id) VALUES (4294967294, 2)");
    EXPECT_EQ(save(6, good), "result: -2");
    EXPECT_THAT(m_Told, HasSubstr("no identifier is left for another sat"));
    m_Channel = channelTo(m_Centre->address(), m_Store.addUser("reader", "LUMO", false));
    EXPECT_EQ(save(6, good), "result: -2");
    EXPECT_THAT(m_Told, HasSubstr("user reader may only read"));
}

} // namespace
