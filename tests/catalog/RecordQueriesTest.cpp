#include "lumo/core/TextEncoding.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <functional>
#include <optional>

namespace {

typedef std::vector<std::string> Lines;

/// What every query of the image catalogue has in common: it writes its name, asks and judges.
class RecordQueries : public ::testing::Test
{
protected:
    /// Plays the answers (a leading '!' is a failed call), and checks the calls and what is logged between
    /// Enter and Leave.
    void expect(const std::string& method, const Lines& answers, const Lines& calls, const Lines& between,
                const std::function<void()>& query)
    {
        SCOPED_TRACE(method + " on " + (answers.empty() ? "nothing" : answers.back()));
        m_Channel.forgetCalls();
        m_Log.clear();
        for (const std::string& answer : answers)
            answer[0] == '!' ? m_Channel.fail(answer.substr(1)) : m_Channel.answer(answer);
        query();
        EXPECT_TRUE(m_Channel.allPlayed());
        EXPECT_EQ(m_Channel.calls(), calls);
        for (const long long timeout : m_Channel.timeouts())
            EXPECT_EQ(timeout, 4321);
        Lines lines{managerLine("Enter Function : " + method, method)};
        for (const std::string& message : between)
            lines.push_back(managerLine(message, method));
        lines.push_back(managerLine("Leave Function : " + method, method));
        EXPECT_EQ(m_Log.lines(), lines);
    }

    LogCapture m_Log;
    FakeChannel m_Channel;
    TestManager m_Manager{m_Channel};
};

/// The first field of a record, its key; of a point the first but one.
template <class Record>
unsigned int& keyOf(Record& record)
{
    return *reinterpret_cast<unsigned int*>(&record);
}
template <>
unsigned int& keyOf(tagCtrlPointTable& point)
{
    return point.pointID;
}
template <>
unsigned int& keyOf(tagImageData& image)
{
    return image.recordKind == DATA_TYPE_CTRL_POINT ? image.body.ctrlPoint.pointID : image.body.type.typeID;
}

/// Runs `query` on a list that holds one element with the key 99; its outcome in one text.
template <class Element>
std::string onList(const std::function<ENUM_RET_TYPE(QList<Element>&)>& query,
                   std::optional<int> recordKind = std::nullopt)
{
    Element mine{};
    keyOf(mine) = 99;
    QList<Element> elements{mine};
    std::string outcome = std::to_string(query(elements));
    for (Element& element : elements)
        outcome += ":" + std::to_string(keyOf(element));
    for (int i = 1; i < elements.size(); ++i) {
        if constexpr (std::is_same_v<Element, tagImageData>) {
            EXPECT_EQ(elements[i].recordKind, recordKind);
            EXPECT_TRUE(recordKind != DATA_TYPE_CTRL_POINT || !elements[i].body.ctrlPoint.ctrlFile);
        }
        if constexpr (std::is_same_v<Element, tagCtrlPointTable>)
            EXPECT_EQ(elements[i].ctrlFile, nullptr);
    }
    return outcome;
}

template <class Record>
std::string onRecord(const std::function<ENUM_RET_TYPE(Record&)>& query)
{
    Record record{};
    keyOf(record) = 99;
    const ENUM_RET_TYPE result = query(record);
    return std::to_string(result) + ":" + std::to_string(keyOf(record));
}

/// A kind of records with its four shapes of queries.
template <class Record>
struct Kind
{
    using Manager = CLumoDataMgr;
    using RecordType = Record;
    const char* stem;
    const char* list;
    const char* key; ///< of the bean
    int recordKind;
    const char* oneName;
    ENUM_RET_TYPE (Manager::*one)(unsigned int, Record&);
    const char* byTypeName;
    ENUM_RET_TYPE (Manager::*byType)(unsigned int, QList<Record>&);
    ENUM_RET_TYPE (Manager::*byTypeMixed)(unsigned int, QList<tagImageData>&);
    const char* byProjectName;
    ENUM_RET_TYPE (Manager::*byProject)(unsigned int, QList<Record>&);
    const char* byMarkName;
    ENUM_RET_TYPE (Manager::*byMark)(unsigned int, unsigned int, QList<Record>&);
};

#define IMAGE_KIND(Record, stem, list, number, one, byType, byProject, byMark)                               \
    Kind<Record>                                                                                             \
    {                                                                                                        \
        stem, list, "image_id", number, #one, &CLumoDataMgr::one, #byType, &CLumoDataMgr::byType,            \
            &CLumoDataMgr::byType, #byProject, &CLumoDataMgr::byProject, #byMark, &CLumoDataMgr::byMark      \
    }

/// Calls `check` with each kind.
template <class Check>
void forEachKind(Check check)
{
    check(IMAGE_KIND(tagKFImageTable, "queryDataSrcPhoto", "datasrcphotos", 5, getKFImage, getKFImageByTypeID,
                     getKFImageByDataID, getKFImageByDataAndMark));
    check(IMAGE_KIND(tagSatTable, "queryDataSrcSat", "datasrcsats", 6, getSatImage, getSatImageByTypeID,
                     getSatImageByDataID, getSatByDataAndMark));
    check(IMAGE_KIND(tagAdsTable, "queryDataSrcAds", "datasrcadss", 7, getAdsImage, getAdsImageByTypeID,
                     getAdsImageByDataID, getAdsByDataAndMark));
    check(Kind<tagCtrlFileTable>{"queryDataSrcControl", "datasrccontrols", "dq_con_id", 8, "getCtrlFile",
                                 &CLumoDataMgr::getCtrlFile, "getCtrlFileByTypeID",
                                 &CLumoDataMgr::getCtrlFileByTypeID, nullptr, "getCtrlFileByDataID",
                                 &CLumoDataMgr::getCtrlFileByDataID, "", nullptr});
    check(IMAGE_KIND(tagDemTable, "queryDataSrcDem", "datasrcdems", 10, getDem, getDemByTypeID,
                     getDemByDataID, getDemByDataAndMark));
    check(IMAGE_KIND(tagDsmTable, "queryDataSrcDsm", "datasrcdsms", 11, getDsm, getDsmByTypeID,
                     getDsmByDataID, getDsmByDataAndMark));
    check(IMAGE_KIND(tagDomTable, "queryDataSrcDom", "datasrcdoms", 12, getDom, getDomByTypeID,
                     getDomByDataID, getDomByDataAndMark));
    check(IMAGE_KIND(tagDlgTable, "queryDataSrcDlg", "datasrcdlgs", 13, getDlg, getDlgByTypeID,
                     getDlgByDataID, getDlgByDataAndMark));
}

} // namespace

class KindQueries : public RecordQueries // by shapes
{
protected:
    template <class Record>
    void one(const std::string& method, const std::string& operation, const std::string& request,
             const std::string& key, const std::function<ENUM_RET_TYPE(Record&)>& query)
    {
        const auto check = [&](const std::string& answer, const std::string& outcome, const Lines& between) {
            expect(method, {answer}, {operation + " {" + request + "}"}, between,
                   [&] { EXPECT_EQ(onRecord<Record>(query), outcome); });
        };
        check("result: 0 bean { " + key + ": -3 }", "1:4294967293", {});
        check("result: 7", "1:4294967295", {});
        check("!gone", "0:99", {operation + " Error : gone"});
        check("result: -2", "0:99", {operation + " Result Error"});
        check("result: -1", "2:99", {operation + " Result NULL"});
    }

    /// `element` begins one in an answer, up to its key; `request` is that of the total.
    template <class Element>
    void pages(const std::string& method, const std::string& operation, const std::string& request,
               const std::string& element, std::optional<int> recordKind,
               const std::function<ENUM_RET_TYPE(QList<Element>&)>& query)
    {
        const auto asked = [&](int start) { // fields stand in the order of their places
            const std::string page = "page_start: " + std::to_string(start) + " page_size: 10000";
            const bool keyFirst = request[0] == 't' || request[0] == 'p';
            return operation + " {" + (keyFirst ? request + " " + page : page + " " + request) + "}";
        };
        const Lines calls{operation + "Total {" + request + "}", asked(0), asked(2)};
        const std::string first = "result: 0 " + element + ": 1 } " + element + ": 2 }";
        const auto check = [&](const Lines& answers, const std::string& outcome, const Lines& between) {
            expect(method, answers, Lines(calls.begin(), calls.begin() + static_cast<long>(answers.size())),
                   between, [&] { EXPECT_EQ(onList<Element>(query, recordKind), outcome); });
        };
        check({"result: 0 total: 3", first, "result: 5 " + element + ": 3 }"}, "1:99:1:2:3", {});
        check({"result: 0 total: 0"}, "1:99", {});
        check({"!gone"}, "0:99", {operation + "Total Error : gone"});
        check({"result: -1"}, "0:99", {operation + "Total Result Error"});
        check({"result: 0 total: 3", first, "!gone"}, "0", {operation + " Error : gone"});
        check({"result: 0 total: 3", first, "result: -2"}, "0", {operation + " Result Error"});
        check({"result: 0 total: 3", first, "result: -1"}, "2", {operation + " Result NULL"});
    }

    /// A list in one call; `lost` tells whether a bad answer empties it.
    template <class Element>
    void list(const std::string& method, const std::string& operation, const std::string& request,
              const std::string& element, std::optional<int> recordKind, bool lost,
              const std::function<ENUM_RET_TYPE(QList<Element>&)>& query)
    {
        const auto check = [&](const std::string& answer, const std::string& outcome, const Lines& between) {
            expect(method, {answer}, {operation + " {" + request + "}"}, between,
                   [&] { EXPECT_EQ(onList<Element>(query, recordKind), outcome); });
        };
        check("result: 5 " + element + ": 1 } " + element + ": 2 }", "1:99:1:2", {});
        check("!gone", "0:99", {operation + " Error : gone"});
        check("result: -2", lost ? "0" : "0:99", {operation + " Result Error"});
        check("result: -1", lost ? "2" : "2:99", {operation + " Result NULL"});
    }
};

TEST_F(KindQueries, OfImagesProductsAndControlFiles)
{
    forEachKind([this](const auto& kind) {
        using Record = typename std::decay_t<decltype(kind)>::RecordType;
        const std::string stem = kind.stem;
        const std::string element = std::string(kind.list) + " { " + kind.key;
        const bool control = kind.recordKind == DATA_TYPE_CTRL_FILE;
        one<Record>(kind.oneName, stem + (control ? "ByDqConID" : "ById"),
                    control ? "dqcon_id: -2" : "record_id: -2", kind.key,
                    [&](Record& record) { return (m_Manager.*kind.one)(0xFFFFFFFE, record); });
        pages<Record>(kind.byTypeName, stem + "ByTypeID", "type_id: 3", element, std::nullopt,
                      [&](QList<Record>& list) { return (m_Manager.*kind.byType)(3, list); });
        pages<Record>(kind.byProjectName, stem + "ByProjectID", "project_id: 3", element, std::nullopt,
                      [&](QList<Record>& list) { return (m_Manager.*kind.byProject)(3, list); });
        if (control)
            return;
        pages<tagImageData>(
            kind.byTypeName, stem + "ByTypeID", "type_id: 3", element, kind.recordKind,
            [&](QList<tagImageData>& list) { return (m_Manager.*kind.byTypeMixed)(3, list); });
        list<Record>(kind.byMarkName, stem + "ByProjectIDAndCommID", "project_id: 3 comm_id: 4", element,
                     std::nullopt, true,
                     [&](QList<Record>& list) { return (m_Manager.*kind.byMark)(3, 4, list); });
    });
}

TEST_F(KindQueries, OfProjectsTypesAndControlPoints)
{
    TestManager& manager = m_Manager;
    const QString name = QString::fromUtf8("北");
    const std::string quoted = "\"\\345\\214\\227\"";
    one<tagDataTable>("getData", "queryDataSrcByProjectID", "project_id: -2", "project_id",
                      [&](tagDataTable& data) { return manager.getData(0xFFFFFFFE, data); });
    one<tagDataTable>("getData", "queryDataSrcByProjectName", "proname: " + quoted + " company_id: 7",
                      "project_id", [&](tagDataTable& data) { return manager.getData(name, data); });
    pages<tagDataTable>("getData", "queryDataSrc", "company_id: 7", "datasrcs { project_id", std::nullopt,
                        [&](QList<tagDataTable>& data) { return manager.getData(data); });
    pages<tagImageData>("getData", "queryDataSrc", "company_id: 7", "datasrcs { project_id", DATA_TYPE_DATA,
                        [&](QList<tagImageData>& data) { return manager.getData(data); });
    one<tagTypeTable>("getDataType", "queryDataSrcTypeByTypeId", "type_id: 3", "type_id",
                      [&](tagTypeTable& type) { return manager.getDataType(3, type); });
    one<tagTypeTable>("getDataType", "queryDataSrcTypeByTypeAndproId", "project_id: 3 data_type: " + quoted,
                      "type_id", [&](tagTypeTable& type) { return manager.getDataType(3, name, type); });
    list<tagTypeTable>("getDataTypeByDataID", "queryDataSrcTypeByProjectID", "project_id: 3",
                       "datasrctypes { type_id", std::nullopt, false,
                       [&](QList<tagTypeTable>& types) { return manager.getDataTypeByDataID(3, types); });
    list<tagImageData>("getDataTypeByDataID", "queryDataSrcTypeByProjectID", "project_id: 3",
                       "datasrctypes { type_id", DATA_TYPE_TYPE, false,
                       [&](QList<tagImageData>& types) { return manager.getDataTypeByDataID(3, types); });
    one<tagCtrlPointTable>("getCtrlPoint", "queryDataSrcControlInfoById", "record_id: 3", "point_id",
                           [&](tagCtrlPointTable& point) { return manager.getCtrlPoint(3, point); });
    pages<tagCtrlPointTable>(
        "getCtrlPoint", "queryDataSrcControlInfoByDqConID", "dqcon_id: 3", "datasrccontrolinfos { point_id",
        std::nullopt, [&](QList<tagCtrlPointTable>& points) { return manager.getCtrlPoint(3, points); });
}

namespace {

/// A condition with a value of its own in each field, for the project and type of these names.
tagQueryCondition conditionOf(const char* project, const char* type)
{
    tagQueryCondition condition;
    condition.conditionTag = 77;
    condition.projectName = QString::fromUtf8(project);
    condition.dataType = QString::fromUtf8(type);
    condition.senType = QString::fromUtf8("全");
    condition.startDate = "some day";
    condition.endDate = "";
    condition.boundA = 1;
    condition.boundB = -2.5;
    condition.boundC = 3;
    condition.boundD = 4;
    return condition;
}

/// What a request says of it behind the two names.
const char kRestOfCondition[] =
    " sentype: \"\\345\\205\\250\" start_date: \"some day\" end_date: \"\" bound_a: 1"
    " bound_b: -2.5 bound_c: 3 bound_d: 4 use_bounds: false";

} // namespace

TEST_F(KindQueries, ASearchForTypesSendsTheConditionAsItIs)
{
    list<tagTypeTable>("searchDataType", "searchDataType",
                       std::string("proname: \"\\345\\214\\227\" data_type: \"Dem\"") + kRestOfCondition +
                           " company_id: 7",
                       "datasrctypes { type_id", std::nullopt, false, [&](QList<tagTypeTable>& types) {
                           return m_Manager.searchDataType(conditionOf("北", "Dem"), types);
                       });
    tagQueryCondition condition = conditionOf("", "");
    condition.endDate = "2024";
    condition.useBounds = true;
    m_Channel.forgetCalls();
    m_Channel.answer("result: 0");
    QList<tagTypeTable> types;
    EXPECT_EQ(m_Manager.searchDataType(condition, types), RET_SUCCESS);
    EXPECT_NE(m_Channel.calls().back().find("end_date: \"2024\""), std::string::npos);
    EXPECT_NE(m_Channel.calls().back().find("use_bounds: true"), std::string::npos);
}

namespace {

const struct
{
    const char* name; ///< of the type, in UTF-8
    int recordKind;
    const char* searched; ///< by searchByDataType
    const char* element;  ///< begins one in an answer, up to its key
    const char* listed;   ///< by getImageByType; null where it knows none
    const char* listedName;
} kTypes[] = {
    {"框幅式影像", 5, "searchDataByTypePhoto", "datasrcphotos { image_id", "queryDataSrcPhotoByTypeID",
     "getKFImageByTypeID"},
    {"卫星影像", 6, "searchDataByTypeSat", "datasrcsats { image_id", "queryDataSrcSatByTypeID",
     "getSatImageByTypeID"},
    {"航空三线阵影像", 7, "searchDataByTypeAds", "datasrcadss { image_id", "queryDataSrcAdsByTypeID",
     "getAdsImageByTypeID"},
    {"控制点属性", 9, "searchDataByTypeControlInfo", "datasrccontrolinfos { point_id", nullptr, nullptr},
    {"DEM", 10, "searchDataByTypeDem", "datasrcdems { image_id", "queryDataSrcDemByTypeID", "getDemByTypeID"},
    {"dem", 10, "searchDataByTypeDem", "datasrcdems { image_id", nullptr, nullptr},
    {"DSM", 11, "searchDataByTypeDsm", "datasrcdsms { image_id", "queryDataSrcDsmByTypeID", "getDsmByTypeID"},
    {"dSm", 11, "searchDataByTypeDsm", "datasrcdsms { image_id", nullptr, nullptr},
    {"DOM", 12, "searchDataByTypeDom", "datasrcdoms { image_id", "queryDataSrcDomByTypeID", "getDomByTypeID"},
    {"Dom", 12, "searchDataByTypeDom", "datasrcdoms { image_id", nullptr, nullptr},
    {"DLG", 13, "searchDataByTypeDlg", "datasrcdlgs { image_id", "queryDataSrcDlgByTypeID", "getDlgByTypeID"},
    {"dlG", 13, "searchDataByTypeDlg", "datasrcdlgs { image_id", nullptr, nullptr},
    {"Demo", 0, nullptr, nullptr, nullptr, nullptr},
    {"", 0, nullptr, nullptr, nullptr, nullptr},
};

tagTypeTable typeOf(const char* name, const char* project = "北")
{
    tagTypeTable type{};
    type.typeID = 3;
    EXPECT_TRUE(convertToMultibyte(name, type.dataType, sizeof type.dataType));
    EXPECT_TRUE(convertToMultibyte(project, type.projectName, sizeof type.projectName));
    return type;
}

} // namespace

TEST_F(KindQueries, TheNameOfATypeDecidesWhatASearchAsksFor)
{
    const tagQueryCondition condition = conditionOf("北", "");
    for (const auto& one : kTypes) {
        const tagTypeTable type = typeOf(one.name);
        const auto query = [&](QList<tagImageData>& images) {
            return m_Manager.searchByDataType(type, condition, images);
        };
        if (one.searched)
            list<tagImageData>("searchByDataType", one.searched,
                               std::string("type_id: 3 proname: \"\\345\\214\\227\" data_type: \"\"") +
                                   kRestOfCondition,
                               one.element, one.recordKind, false, query);
        else
            expect("searchByDataType", {}, {}, {}, [&] { EXPECT_EQ(onList<tagImageData>(query), "1:99"); });
    }
}

TEST_F(KindQueries, TheNameOfATypeDecidesWhatItsImagesAre)
{
    for (const auto& one : kTypes) {
        SCOPED_TRACE(one.name);
        const tagTypeTable type = typeOf(one.name);
        const auto query = [&](QList<tagImageData>& images) {
            return m_Manager.getImageByType(type, images);
        };
        if (one.listed) {
            pages<tagImageData>(one.listedName, one.listed, "type_id: 3", one.element, one.recordKind, query);
            continue;
        }
        m_Log.clear();
        m_Channel.forgetCalls();
        EXPECT_EQ(onList<tagImageData>(query), "0:99");
        EXPECT_EQ(m_Channel.calls(), Lines());
        EXPECT_EQ(m_Log.lines(), Lines{managerLine("Image Type Error", "getImageByType")});
    }
}

TEST_F(KindQueries, ASearchOfAnotherTypeThanTheConditionsAsksNothing)
{
    const struct
    {
        const char* project;
        const char* type;
        const char* line; ///< empty where the search goes on
    } kCases[] = {
        {"北", "", ""},
        {"", "DEM", ""},
        {"北", "DEM", ""},
        {"南", "DEM", "DataName isn't Match"},
        {"南", "DSM", "DataName isn't Match"},
        {"北", "Dem", "DataType isn't Match"},
    };
    const tagTypeTable type = typeOf("DEM");
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.line);
        tagQueryCondition condition;
        condition.projectName = QString::fromUtf8(one.project);
        condition.dataType = QString::fromUtf8(one.type);
        const auto query = [&](QList<tagImageData>& images) {
            return m_Manager.searchByDataType(type, condition, images);
        };
        if (*one.line) {
            expect("searchByDataType", {}, {}, {one.line},
                   [&] { EXPECT_EQ(onList<tagImageData>(query), "0:99"); });
        } else {
            m_Channel.answer("result: 0");
            EXPECT_EQ(onList<tagImageData>(query), "1:99");
            EXPECT_NE(m_Channel.calls().back().find(std::string("data_type: \"") + one.type + '"'),
                      std::string::npos);
        }
    }
}

TEST_F(KindQueries, AHitStartsZeroedAndKeepsWhatAnEarlierOneLeft)
{
    m_Channel.answer("result: 0 datasrcsats { image_id: 1 text3: '0123456789abcdef' } "
                     "datasrcsats { image_id: 2 text3: 'fits' value1: '5' } datasrcsats { image_id: 3 }");
    QList<tagImageData> images;
    ASSERT_EQ(m_Manager.searchByDataType(typeOf("卫星影像"), {}, images), RET_SUCCESS);
    ASSERT_EQ(images.size(), 3);
    EXPECT_EQ(std::string(images[0].body.satImage.text3, 16), std::string(16, '\0'));
    EXPECT_EQ(images[0].body.satImage.value1, 0.0);
    EXPECT_EQ(images[0].body.satImage.presence, 0);
    EXPECT_EQ(images[2].body.satImage.value1, 5.0);
    EXPECT_EQ(images[2].body.satImage.presence, 0);
}
