#include "lumo/core/TextEncoding.h"
#include "tests/support/MethodTable.h"

namespace {

using Images = QList<tagImageData>;

/// The queries of a kind of image: by identifier, by type in two sorts of lists, by project, by project and
/// mark.
// NOLINTBEGIN(bugprone-macro-parentheses): a type can't have parentheses.
#define TEST_IMAGE_KIND(Record, one, byType, byProject, byMark)                                              \
    {#one, on<Record>([](auto& m, auto& record) { return m.one(0xFFFFFFFE, record); })},                     \
        {#byType, on<QList<Record>>([](auto& m, auto& list) { return m.byType(3, list); })},                 \
        {#byType "(images)", on<Images>([](auto& m, auto& list) { return m.byType(3, list); })},             \
        {#byProject, on<QList<Record>>([](auto& m, auto& list) { return m.byProject(3, list); })},           \
    {                                                                                                        \
#byMark, on < QList < Record>>([](auto& m, auto& list) { return m.byMark(3, 4, list); })             \
    }
// NOLINTEND(bugprone-macro-parentheses)

const QString kName = QString::fromUtf8("北");

Calls calls()
{
    return {
        TEST_IMAGE_KIND(tagKFImageTable, getKFImage, getKFImageByTypeID, getKFImageByDataID,
                        getKFImageByDataAndMark),
        TEST_IMAGE_KIND(tagSatTable, getSatImage, getSatImageByTypeID, getSatImageByDataID,
                        getSatByDataAndMark),
        TEST_IMAGE_KIND(tagAdsTable, getAdsImage, getAdsImageByTypeID, getAdsImageByDataID,
                        getAdsByDataAndMark),
        TEST_IMAGE_KIND(tagDemTable, getDem, getDemByTypeID, getDemByDataID, getDemByDataAndMark),
        TEST_IMAGE_KIND(tagDsmTable, getDsm, getDsmByTypeID, getDsmByDataID, getDsmByDataAndMark),
        TEST_IMAGE_KIND(tagDomTable, getDom, getDomByTypeID, getDomByDataID, getDomByDataAndMark),
        TEST_IMAGE_KIND(tagDlgTable, getDlg, getDlgByTypeID, getDlgByDataID, getDlgByDataAndMark),
        {"getCtrlFile",
         on<tagCtrlFileTable>([](auto& m, auto& file) { return m.getCtrlFile(0xFFFFFFFE, file); })},
        {"getCtrlFileByTypeID",
         on<QList<tagCtrlFileTable>>([](auto& m, auto& files) { return m.getCtrlFileByTypeID(3, files); })},
        {"getCtrlFileByDataID",
         on<QList<tagCtrlFileTable>>([](auto& m, auto& files) { return m.getCtrlFileByDataID(3, files); })},
        {"getCtrlPoint(id)",
         on<tagCtrlPointTable>([](auto& m, auto& point) { return m.getCtrlPoint(3, point); })},
        {"getCtrlPoint(points)",
         on<QList<tagCtrlPointTable>>([](auto& m, auto& points) { return m.getCtrlPoint(3, points); })},
        {"getData(id)", on<tagDataTable>([](auto& m, auto& data) { return m.getData(0xFFFFFFFE, data); })},
        {"getData(name)", on<tagDataTable>([](auto& m, auto& data) { return m.getData(kName, data); })},
        {"getData(data)", on<QList<tagDataTable>>([](auto& m, auto& data) { return m.getData(data); })},
        {"getData(images)", on<Images>([](auto& m, auto& data) { return m.getData(data); })},
        {"getDataType(id)", on<tagTypeTable>([](auto& m, auto& type) { return m.getDataType(3, type); })},
        {"getDataType(name)",
         on<tagTypeTable>([](auto& m, auto& type) { return m.getDataType(3, kName, type); })},
        {"getDataTypeByDataID(types)",
         on<QList<tagTypeTable>>([](auto& m, auto& types) { return m.getDataTypeByDataID(3, types); })},
        {"getDataTypeByDataID(images)",
         on<Images>([](auto& m, auto& types) { return m.getDataTypeByDataID(3, types); })},
    };
}

/// A condition with a value of its own in each field, for the project and type of these names.
tagQueryCondition conditionOf(const char* project, const char* type, bool bounded = false)
{
    tagQueryCondition condition;
    condition.conditionTag = 77; // not sent
    condition.projectName = QString::fromUtf8(project);
    condition.dataType = QString::fromUtf8(type);
    condition.senType = QString::fromUtf8("全");
    condition.startDate = "some day";
    condition.endDate = bounded ? "2024" : "";
    condition.boundA = 1;
    condition.boundB = -2.5;
    condition.boundC = 3;
    condition.boundD = 4;
    condition.useBounds = bounded;
    return condition;
}

/// What a request has of it after the two names, up to the last date.
const char kRestOfCondition[] = " sentype: \"全\" start_date: \"some day\" end_date: ";
const char kBounds[] = " bound_a: 1 bound_b: -2.5 bound_c: 3 bound_d: 4 use_bounds: ";

const struct
{
    const char* name; ///< of the type, in UTF-8
    int recordKind;
    const char* searched; ///< kind in the operation of searchByDataType
    const char* list;     ///< in an answer
    const char* listed;   ///< kind in the operation of getImageByType; null where it has none
    const char* listedName;
} kTypes[] = {
    {"框幅式影像", 5, "Photo", "datasrcphotos { image_id", "Photo", "getKFImageByTypeID"},
    {"卫星影像", 6, "Sat", "datasrcsats { image_id", "Sat", "getSatImageByTypeID"},
    {"航空三线阵影像", 7, "Ads", "datasrcadss { image_id", "Ads", "getAdsImageByTypeID"},
    {"控制点属性", 9, "ControlInfo", "datasrccontrolinfos { point_id", nullptr, nullptr},
    {"DEM", 10, "Dem", "datasrcdems { image_id", "Dem", "getDemByTypeID"},
    {"dem", 10, "Dem", "datasrcdems { image_id", nullptr, nullptr},
    {"DSM", 11, "Dsm", "datasrcdsms { image_id", "Dsm", "getDsmByTypeID"},
    {"dSm", 11, "Dsm", "datasrcdsms { image_id", nullptr, nullptr},
    {"DOM", 12, "Dom", "datasrcdoms { image_id", "Dom", "getDomByTypeID"},
    {"Dom", 12, "Dom", "datasrcdoms { image_id", nullptr, nullptr},
    {"DLG", 13, "Dlg", "datasrcdlgs { image_id", "Dlg", "getDlgByTypeID"},
    {"dlG", 13, "Dlg", "datasrcdlgs { image_id", nullptr, nullptr},
    {"Demo", 0, nullptr, nullptr, nullptr, nullptr},
    {"", 0, nullptr, nullptr, nullptr, nullptr},
};

tagTypeTable typeOf(const char* name)
{
    tagTypeTable type{};
    type.typeID = 3;
    EXPECT_TRUE(convertToMultibyte(name, type.dataType, sizeof type.dataType));
    EXPECT_TRUE(convertToMultibyte("北", type.projectName, sizeof type.projectName));
    return type;
}

/// A search by a type and a condition; one whose operation is empty asks nothing.
Method searchFor(const tagTypeTable& type, const tagQueryCondition& condition, const std::string& call = {},
                 const std::string& answer = {}, const std::string& outcome = "ok kept")
{
    return method<Images>("searchByDataType", Verdict::judged, call, answer, outcome,
                          [=](auto& m, auto& images) { return m.searchByDataType(type, condition, images); });
}

class RecordQueries : public MethodTable
{
};

} // namespace

TEST_F(RecordQueries, AskAndJudgeAsTheirTableSays)
{
    run(methodsIn(TEST_FOLDER "/methods.txt", calls()));
}

TEST_F(RecordQueries, ASearchForTypesSendsTheConditionAsItIs)
{
    for (const bool bounded : {false, true})
        run({method<QList<tagTypeTable>>(
            "searchDataType", Verdict::judged,
            std::string("searchDataType {proname: \"北\" data_type: \"Dem\"") + kRestOfCondition +
                (bounded ? "\"2024\"" : "\"\"") + kBounds + (bounded ? "true" : "false") + " company_id: 7}",
            "datasrctypes { type_id: 1 } datasrctypes { type_id: 2 }", "ok kept 1 2",
            [=](auto& m, auto& types) {
                return m.searchDataType(conditionOf("北", "Dem", bounded), types);
            })});
}

TEST_F(RecordQueries, TheNameOfATypeDecidesWhatASearchAsksFor)
{
    const tagQueryCondition condition = conditionOf("北", "");
    for (const auto& one : kTypes) {
        SCOPED_TRACE(one.name);
        if (!one.searched) {
            check(searchFor(typeOf(one.name), condition), {}, "ok kept");
            continue;
        }
        const std::string kind = std::to_string(one.recordKind) + "#", list = one.list;
        run({searchFor(typeOf(one.name), condition,
                       std::string("searchDataByType") + one.searched +
                           " {type_id: 3 proname: \"北\" data_type: \"\"" + kRestOfCondition + "\"\"" +
                           kBounds + "false}",
                       list + ": 1 } " + list + ": 2 }", "ok kept " + kind + "1 " + kind + "2")});
    }
}

TEST_F(RecordQueries, TheNameOfATypeDecidesWhatItsImagesAre)
{
    for (const auto& one : kTypes) {
        SCOPED_TRACE(one.name);
        const auto query = [&](auto& m, auto& images) { return m.getImageByType(typeOf(one.name), images); };
        if (one.listed) {
            run({method<Images>(one.listedName, Verdict::pages,
                                std::string("queryDataSrc") + one.listed + "ByTypeID {type_id: 3 $}",
                                std::string(one.list) + ": $ }", std::to_string(one.recordKind) + "#",
                                query)});
            continue;
        }
        m_Log.clear();
        EXPECT_EQ(method<Images>("", Verdict::judged, "", "", "", query).call.run(m_Manager), "failed kept");
        EXPECT_EQ(m_Log.lines(), Lines{managerLine("Image Type Error", "getImageByType")});
    }
}

TEST_F(RecordQueries, ASearchOfAnotherTypeThanTheConditionsAsksNothing)
{
    const struct
    {
        const char* project;
        const char* type;
        const char* line; ///< null where the search goes on
    } kCases[] = {
        {"北", "", nullptr},
        {"", "DEM", nullptr},
        {"北", "DEM", nullptr},
        {"南", "DEM", "DataName isn't Match"},
        {"南", "DSM", "DataName isn't Match"},
        {"北", "Dem", "DataType isn't Match"},
    };
    for (const auto& one : kCases) {
        const Method search = searchFor(typeOf("DEM"), conditionOf(one.project, one.type));
        if (one.line) {
            check(search, {}, "failed kept", one.line);
            continue;
        }
        m_Channel.answer("result: 0");
        EXPECT_EQ(search.call.run(m_Manager), "ok kept");
        EXPECT_NE(m_Channel.calls().back().find(std::string("data_type: \"") + one.type + '"'),
                  std::string::npos);
    }
}

TEST_F(RecordQueries, AHitStartsZeroedAndKeepsWhatAnEarlierOneLeft)
{
    m_Channel.answer("result: 0 datasrcsats { image_id: 1 text3: '0123456789abcdef' } "
                     "datasrcsats { image_id: 2 text3: 'fits' value1: '5' } datasrcsats { image_id: 3 }");
    Images images;
    ASSERT_EQ(m_Manager.searchByDataType(typeOf("卫星影像"), {}, images), RET_SUCCESS);
    ASSERT_EQ(images.size(), 3);
    EXPECT_EQ(std::string(images[0].body.satImage.text3, 16), std::string(16, '\0'));
    EXPECT_EQ(images[0].body.satImage.value1, 0.0);
    EXPECT_EQ(images[0].body.satImage.presence, 0);
    EXPECT_EQ(images[2].body.satImage.value1, 5.0);
    EXPECT_EQ(images[2].body.satImage.presence, 0);
}
