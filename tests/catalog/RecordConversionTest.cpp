#include "ledgerserver.pb.h"
#include "lumo/components/platform/CodePage.h"
#include "tests/support/OutcomeText.h"
#include "tests/support/TestManager.h"

#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <langinfo.h>
#include <locale.h>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using namespace ledgerserver;

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

/// A field of a record.
struct Field
{
    char sort; ///< key, text, optional double (d) and integer (i), number, code, word of bits, pointer, x:
               ///< not used
    std::size_t size;
    int place = -1; ///< in the bean
    std::size_t offset = 0;
    unsigned int bit = 0; ///< of an optional number
};

/// A record and its bean.
struct Layout
{
    const Message& bean; ///< empty
    std::function<void(const Message&, void*)> convert;
    std::vector<Field> fields; ///< in declared order
    std::string marks;         ///< the bytes of a record that nothing has touched
    std::uint32_t bits = 0;    ///< all that the optional numbers use
};

/// Reads "k3" (a key from place 3), "t32@4" (a text in 32 bytes), "w16" (a word of 16 bits) ...
Field read(const std::string& word)
{
    Field field{word[0], 8};
    std::istringstream text(word.substr(1));
    char at;
    if (field.sort == 't')
        text >> field.size >> at >> field.place;
    else if (field.sort == 'x' || field.sort == 'w')
        text >> field.size;
    else if (field.sort != 'p')
        text >> field.place;
    if (field.sort == 'w')
        field.size /= 8;
    if (std::strchr("kic", field.sort))
        field.size = 4;
    return field;
}

template <class Bean, class Record>
Layout describe(void (*convert)(const Bean&, Record&), const std::string& fields)
{
    Layout layout{Bean::default_instance(),
                  [convert](const Message& bean, void* record) {
                      convert(static_cast<const Bean&>(bean), *static_cast<Record*>(record));
                  },
                  {},
                  std::string(sizeof(Record), kMark)};
    std::size_t end = 0;
    unsigned int bit = 0;
    const auto align = [&](std::size_t alignment) { end = (end + alignment - 1) / alignment * alignment; };
    std::istringstream words(fields);
    for (std::string word; words >> word;) {
        if (word == "|") { // an embedded record of doubles begins
            align(sizeof(double));
            continue;
        }
        Field field = read(word);
        align(std::strchr("tx", field.sort) ? 1 : field.size);
        field.offset = end;
        end += field.size;
        if (std::strchr("di", field.sort))
            layout.bits |= 1u << (field.bit = bit++);
        layout.fields.push_back(field);
    }
    align(alignof(Record));
    EXPECT_EQ(end, sizeof(Record)) << layout.bean.GetTypeName();
    return layout;
}

const std::vector<Layout>& layouts()
{
    static const std::vector<Layout> all = {
        describe(&TestManager::getDiskFromBean, "k0 k4 t128@7 t256@2 t256@1"),
        describe(&TestManager::getFolderFromBean, "k0 k6 k1 t256@2 t32@4 t64@3"),
        describe(&TestManager::getFileFromBean, "k0 k1 t256@2 t32@4 t64@5"),
        describe(&TestManager::getDataFromBean,
                 "k0 k40 t256@1 t32@3 t32@4 t64@5 t64@6 t64@7 t64@37 t32@38 t32@39 | c12 c14 n15 n16 n18 n20 "
                 "n19 n22 n21 n35 c24 t512@36 n29 n30 n31 n32 n33 n34 n35"),
        describe(&TestManager::getDataTypeFromBean, "k0 k1 t64@3 t64@2 x192 t32@4"),
        describe(&TestManager::getKFImageDataFromBean,
                 "k0 k1 t256@2 t128@51 t128@3 t16@4 t32@5 t16@6 t32@7 t16@8 t64@22 w16 d9 d12 d15 d16 d17 "
                 "d18 d19 d20 d10 d11 i13 i14 d21 d23 d49 d50 | c24 c26 n27 n28 n30 n47 n31 n35 n34 n45 c48 "
                 "t512@46 n39 n40 n41 n42 n43 n44 n45"),
        describe(&TestManager::getSatImageDataFromBean,
                 "k0 k1 t256@2 t128@48 t128@3 t16@4 t32@6 t16@18 t16@21 t64@22 w16 d5 d7 d8 d13 d14 d17 "
                 "i19 i20 d15 d9 d10 d11 d12 d16 | c23 c25 n26 n27 n29 n46 n30 n34 n33 n44 c47 t512@45 n38 "
                 "n39 n40 n41 n42 n43 n44"),
        describe(&TestManager::getAdsImageDataFromBean,
                 "k0 k1 t256@2 t128@43 t128@3 t16@4 t32@16 t16@12 t16@13 t8@15 t64@42 w16 d14 d5 d6 d7 d8 "
                 "d11 i9 i10 | c17 c19 n20 n21 n23 n40 n24 n28 n27 n38 c41 t512@39 n32 n33 n34 n35 n36 n37 "
                 "n38"),
        describe(&TestManager::getDemDataFromBean,
                 "k0 k1 t256@2 t128@63 t128@3 t16@5 t32@7 t16@8 t16@9 t128@18 t128@20 t128@23 t128@25 "
                 "t128@19 t128@24 t128@21 t128@22 t32@41 t64@47 w32 d10 d11 d12 d13 d14 d15 d16 d17 d26 "
                 "d27 d28 d4 d62 i6 i42 i43 i44 d45 i39 i40 | c31 c32 n49 n50 n30 n51 n33 n53 n52 n60 c46 "
                 "t512@61 n54 n55 n56 n57 n58 n59 n60"),
        describe(&TestManager::getDsmDataFromBean,
                 "k0 k1 t256@2 t128@51 t128@3 t16@5 t32@7 t16@8 t16@9 t32@30 t32@31 t64@29 w32 d4 d10 d11 "
                 "d12 d13 d14 d15 d16 d17 d50 i6 i32 i33 i34 i35 | c20 c21 n37 n38 n19 n39 n22 n41 n40 n48 "
                 "c28 t512@49 n42 n43 n44 n45 n46 n47 n48"),
        describe(&TestManager::getDomDataFromBean,
                 "k0 k1 t256@2 t128@63 t128@3 t16@5 t32@7 t16@8 t16@9 t128@18 t128@20 t128@23 t128@25 "
                 "t128@19 t128@24 t128@21 t128@22 t16@36 t32@45 t32@46 t64@44 w32 d4 d62 d10 d11 d12 d13 "
                 "d14 d15 d16 d17 i6 i39 i37 i38 i40 i41 i42 i47 | c28 c29 n49 n50 n27 n51 n30 n53 n52 n60 "
                 "c43 t512@61 n54 n55 n56 n57 n58 n59 n60"),
        describe(&TestManager::getDlgDataFromBean,
                 "k0 k1 t256@2 t128@64 t128@3 t16@5 t32@7 t16@59 t16@8 t16@9 t128@18 t128@20 t128@23 "
                 "t128@25 t128@19 t128@24 t128@21 t128@22 t256@36 t64@43 w32 d4 d10 d11 d12 d13 d14 d15 "
                 "d16 d17 d63 i6 i37 i38 i39 i40 i41 i62 i60 i61 i44 | c28 c29 n46 n47 n27 n48 n30 n50 n49 "
                 "n57 c42 t512@58 n51 n52 n53 n54 n55 n56 n57"),
        describe(&TestManager::getCtrlFileDataFromBean,
                 "k0 k1 t256@2 t256@3 t256@4 t64@33 t64@34 t64@35 t32@37 t32@36 t128@38 t64@24 w16 d5 | c7 "
                 "c9 n10 n11 n13 n22 n14 n18 n17 n31 c23 t512@32 n25 n26 n27 n28 n29 n30 n31"),
        describe<DataSrcControlInfoBean, tagCtrlPointTable>(
            [](const auto& bean, auto& point) { TestManager::getCtrlPointDataFromBean(bean, point); },
            "p k0 k1 t32@2 t512@6 w16 d3 d4 d5"),
        describe(&TestManager::getCommentInfoFromBean, "k0 t64@1 t64@2"),
        describe(&TestManager::getCommentImageFromBean, "k0 t64@1 t64@2"),
    };
    return all;
}

template <class Value>
Value valueAt(const std::string& record, const Field& field)
{
    Value value{};
    std::memcpy(&value, record.data() + field.offset, std::min(sizeof value, field.size));
    return value;
}

/// The value of a field of a converted record, "kept" where nothing has touched it.
std::string shown(const Layout& layout, const Field& field, const std::string& record)
{
    std::string bytes = record.substr(field.offset, field.size);
    if (field.sort != 'w' && bytes == std::string(field.size, kMark))
        return "kept";
    std::ostringstream text;
    switch (field.sort) {
    case 'k':
        text << ::text(valueAt<unsigned int>(record, field));
        break;
    case 't':
        text << bytes.c_str();
        EXPECT_EQ(bytes.find_first_not_of('\0', text.str().size()), std::string::npos) << "zeroes follow";
        break;
    case 'd':
    case 'n':
        text << valueAt<double>(record, field);
        break;
    case 'w': {
        const auto word = valueAt<std::uint32_t>(record, field);
        EXPECT_EQ(word & ~layout.bits, valueAt<std::uint32_t>(layout.marks, field) & ~layout.bits);
        text << (word & layout.bits);
        break;
    }
    case 'p':
        return valueAt<void*>(record, field) == nullptr ? "null" : "a pointer";
    default:
        text << valueAt<int>(record, field);
    }
    return text.str();
}

typedef std::unique_ptr<Message> Bean;

/// A bean with each text or, of the filled one, each place set: a text "place.25", a key of place + 1000.
Bean beanOf(const Layout& layout, bool filled, const std::string& everyText = {})
{
    Bean bean(layout.bean.New());
    const google::protobuf::Reflection& reflection = *bean->GetReflection();
    for (int place = 0; place < bean->GetDescriptor()->field_count(); ++place) {
        const FieldDescriptor* field = bean->GetDescriptor()->field(place);
        if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING)
            reflection.SetString(bean.get(), field, filled ? std::to_string(place) + ".25" : everyText);
        else if (filled && field->cpp_type() == FieldDescriptor::CPPTYPE_INT32)
            reflection.SetInt32(bean.get(), field, place + 1000);
        else if (filled)
            reflection.SetUInt32(bean.get(), field, static_cast<unsigned int>(place) + 1000);
    }
    return bean;
}

void setText(Message& bean, int place, const std::string& text)
{
    bean.GetReflection()->SetString(&bean, bean.GetDescriptor()->field(place), text);
}

/// Calls `check` with each field of each record and a function that converts a bean to a record, of marks
/// unless it is given, and shows the field.
using Show = std::function<std::string(const Message&, std::string*)>;
void forEachField(const std::string& sorts,
                  const std::function<void(const Layout&, const Field&, const Show&)>& check)
{
    for (const Layout& layout : layouts())
        for (const Field& field : layout.fields)
            if (sorts.find(field.sort) != std::string::npos) {
                SCOPED_TRACE(layout.bean.GetTypeName() + " " + field.sort + std::to_string(field.place));
                check(layout, field, [&](const Message& bean, std::string* given) {
                    std::string fresh = layout.marks;
                    std::string& record = given ? *given : fresh;
                    layout.convert(bean, record.data());
                    return shown(layout, field, record);
                });
            }
}

TEST(RecordConversion, EachFieldComesFromItsOwnPlace)
{
    forEachField("ktdnicpwx", [](const Layout& layout, const Field& field, const Show& show) {
        const std::string place = std::to_string(field.place);
        const std::map<char, std::string> expected{{'k', std::to_string(field.place + 1000)},
                                                   {'t', place + ".25"},
                                                   {'d', place + ".25"},
                                                   {'n', place + ".25"},
                                                   {'i', place},
                                                   {'c', "-1"}, // a text in no table
                                                   {'p', "null"},
                                                   {'w', std::to_string(layout.bits)},
                                                   {'x', "kept"}};
        EXPECT_EQ(show(*beanOf(layout, true), nullptr), expected.at(field.sort));
    });
}

TEST(RecordConversion, AbsentFieldsAndEmptyTextsGetTheirDefaultsAndOptionalNumbersStay)
{
    const std::map<char, std::string> defaults{{'k', "none"}, {'t', ""},     {'d', "kept"},
                                               {'n', "0"},    {'i', "kept"}, {'c', "-1"},
                                               {'p', "null"}, {'w', "0"},    {'x', "kept"}};
    forEachField("ktdnicpwx", [&](const Layout& layout, const Field& field, const Show& show) {
        EXPECT_EQ(show(layout.bean, nullptr), defaults.at(field.sort));
        EXPECT_EQ(show(*beanOf(layout, false, ""), nullptr), defaults.at(field.sort));
    });
}

TEST(RecordConversion, EachOptionalNumberHasABitOfItsOwn)
{
    forEachField("di", [](const Layout& layout, const Field& field, const Show& show) {
        const Field& word = *std::find_if(layout.fields.begin(), layout.fields.end(),
                                          [](const Field& each) { return each.sort == 'w'; });
        const Bean bean(layout.bean.New());
        for (const char* text : {"0", "letters"}) {
            setText(*bean, field.place, text);
            std::string record = layout.marks;
            EXPECT_EQ(show(*bean, &record), "0");
            EXPECT_EQ(shown(layout, word, record), std::to_string(1u << field.bit));
            show(*beanOf(layout, true), &record);
            EXPECT_EQ(show(layout.bean, &record),
                      std::to_string(field.place) + (field.sort == 'd' ? ".25" : ""));
            EXPECT_EQ(shown(layout, word, record), "0");
        }
    });
}

TEST(RecordConversion, ATextThatDoesNotFitLeavesItsFieldAloneAndNoOther)
{
    forEachField("t", [](const Layout& layout, const Field& field, const Show& show) {
        const Bean bean = beanOf(layout, true);
        const std::string longest(field.size - 2, 'x');
        setText(*bean, field.place, longest);
        EXPECT_EQ(show(*bean, nullptr), longest);
        setText(*bean, field.place, longest + 'x');
        std::string record = layout.marks;
        EXPECT_EQ(show(*bean, &record), "kept");
        for (const Field& other : layout.fields)
            EXPECT_TRUE(&other == &field || other.sort == 'x' || shown(layout, other, record) != "kept");
    });
}

TEST(RecordConversion, CodesAreReadFromTheirWholeTextsAndInGbkOnly)
{
    const std::vector<std::vector<std::string>> tables = {
        {"WGS84", "北京54", "西安80", "中国2000", "自定义"},
        {"经纬度", "TM投影", "高斯投影", "UTM投影", "兰波特等角投影", "地心直角坐标"},
        {"南半球", "北半球"}};
    std::size_t table = 0;
    forEachField("c", [&](const Layout& layout, const Field& field, const Show& show) {
        const Bean bean(layout.bean.New());
        const auto code = [&](const std::string& text) {
            setText(*bean, field.place, text);
            return show(*bean, nullptr);
        };
        const std::vector<std::string>& texts = tables[table++ % 3];
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(code(texts[i]), std::to_string(i)) << texts[i];
            EXPECT_EQ(code(texts[i] + " "), "-1");
        }
        EXPECT_EQ(code("wgs84"), "-1");
        EXPECT_EQ(code(std::string(1000, 'x')), "-1");
        EXPECT_TRUE(platform::setSystemCodePage(platform::kUtf8CodePage));
        EXPECT_EQ(code(texts.back()), "-1");
        EXPECT_TRUE(platform::setSystemCodePage(platform::kGbkCodePage));
    });
}

const struct
{
    const char* text;
    double number;
    int count;
} kNumberTexts[] = {
    {"1.5abc", 1.5, 1},
    {"abc", 0, 0},
    {" \t\n+7", 7, 7},
    {"-2e3", -2000, -2},
    {"0x10", 16, 0},
    {"1e400", HUGE_VAL, 1},
    {"-99999999999999999999", -1e20, -2147483647 - 1},
    {"2147483648", 2147483648.0, 2147483647},
    {"4096px", 4096, 4096},
    {"1,5", 1, 1},
    {".5", 0.5, 0},
    {"5.", 5, 5},
    {".", 0, 0},
    {"-.", 0, 0},
    {"-116.391275", -116.391275, -116},
    {"123456789012.25", 123456789012.25, 2147483647},
    {"0.1234567890123456789", 0.1234567890123456789, 0},
    {"9007199254740993", 9007199254740993.0, 2147483647},
    {"+", 0, 0},
    {"12 34", 12, 12},
};

void expectNumbersAreRead()
{
    for (const auto& one : kNumberTexts) {
        DataSrcPhotoBean bean;
        bean.set_value1(one.text);
        bean.set_count1(one.text);
        bean.set_coord_param1(one.text);
        tagKFImageTable image;
        TestManager::getKFImageDataFromBean(bean, image);
        EXPECT_EQ(image.value1, one.number) << one.text;
        EXPECT_EQ(image.count1, one.count) << one.text;
        EXPECT_EQ(image.coord.coordParam1, one.number) << one.text;
    }
}

TEST(RecordConversion, NumbersAreReadAsFarAsTheyGoAlsoInALocaleWithADecimalComma)
{
    expectNumbersAreRead();
    const QTemporaryDir folder;
    const QString made = folder.filePath("de_DE.UTF-8");
    ASSERT_EQ(QProcess::execute("localedef", {"--no-warnings=all", "-i", "de_DE", "-f", "UTF-8", made}), 0);
    ASSERT_EQ(setenv("LOCPATH", folder.path().toUtf8().constData(), 1), 0);
    const locale_t german = newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
    ASSERT_TRUE(german);
    ASSERT_STREQ(nl_langinfo_l(RADIXCHAR, german), ",");
    const locale_t before = uselocale(german);
    expectNumbersAreRead();
    uselocale(before);
    freelocale(german);
}

TEST(RecordConversion, APointKeepsTheControlFileThatItIsGiven)
{
    const tagCtrlFileTable file{};
    tagCtrlPointTable point;
    TestManager::getCtrlPointDataFromBean(DataSrcControlInfoBean(), point, &file);
    EXPECT_EQ(point.ctrlFile, &file);
}

TEST(RecordConversion, TheLengthOfATextIsThatInTheCodePage)
{
    FileTableBean bean;
    bean.set_name(QString::fromUtf8("影").repeated(100).toStdString()); // 300 bytes of UTF-8
    tagFileTable file;
    TestManager::getFileFromBean(bean, file);
    EXPECT_EQ(std::strlen(file.fileName), 200u);
    EXPECT_EQ(std::string(file.fileName, 2), "\xd3\xb0");
}

} // namespace

TEST(CatalogueMessages, FieldsAreNumberedByTheirPlacesAndRequestsHaveTheirsWhereTheyBelong)
{
    const google::protobuf::FileDescriptor& services = *LedgerServices::descriptor()->file();
    for (int i = 0; i <= services.dependency_count(); ++i) {
        const auto& file = i == services.dependency_count() ? services : *services.dependency(i);
        for (int j = 0; j < file.message_type_count(); ++j)
            for (int place = 0; place < file.message_type(j)->field_count(); ++place)
                EXPECT_EQ(file.message_type(j)->field(place)->number(), place + 1)
                    << file.message_type(j)->name();
    }
    std::istringstream places(
        "0 project_id 1 type_id 2 record_id 3 file_id 4 src_id 6 data_type_id 7 page_start "
        "8 page_size 17 bound_a 18 bound_b 19 bound_c 20 bound_d 21 use_bounds 22 dqcon_id "
        "26 comment_id 30 parent_src_id 40 checkdatabean 42 area_id 44 comm_id "
        "54 company_id 55 address_kind");
    std::string name;
    for (int place; places >> place >> name;)
        EXPECT_EQ(DataUtilBeanReq::descriptor()->field(place)->name(), name);
    EXPECT_EQ(CheckDataBean::descriptor()->field(14)->name(), "dqcon_id");
    EXPECT_EQ(CheckDataBean::descriptor()->field(17)->name(), "company_id");
    EXPECT_EQ(CheckDataBean::descriptor()->field(18)->name(), "project_id");
}
