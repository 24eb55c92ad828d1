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
#include <fstream>
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
Layout describe(const std::string& fields, void (*convert)(const Bean&, Record&))
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
    static const std::vector<Layout> all = [] {
        std::map<std::string, std::string> fields;
        std::ifstream lines(TEST_FOLDER "/records.txt");
        for (std::string name, line; lines >> name && std::getline(lines, line);)
            fields[name] = line;
        return std::vector<Layout>{
            describe(fields["Disk"], &TestManager::getDiskFromBean),
            describe(fields["Folder"], &TestManager::getFolderFromBean),
            describe(fields["File"], &TestManager::getFileFromBean),
            describe(fields["Data"], &TestManager::getDataFromBean),
            describe(fields["DataType"], &TestManager::getDataTypeFromBean),
            describe(fields["KFImageData"], &TestManager::getKFImageDataFromBean),
            describe(fields["SatImageData"], &TestManager::getSatImageDataFromBean),
            describe(fields["AdsImageData"], &TestManager::getAdsImageDataFromBean),
            describe(fields["DemData"], &TestManager::getDemDataFromBean),
            describe(fields["DsmData"], &TestManager::getDsmDataFromBean),
            describe(fields["DomData"], &TestManager::getDomDataFromBean),
            describe(fields["DlgData"], &TestManager::getDlgDataFromBean),
            describe(fields["CtrlFileData"], &TestManager::getCtrlFileDataFromBean),
            describe<DataSrcControlInfoBean, tagCtrlPointTable>(
                fields["CtrlPointData"],
                [](const auto& bean, auto& point) { TestManager::getCtrlPointDataFromBean(bean, point); }),
            describe(fields["CommentInfo"], &TestManager::getCommentInfoFromBean),
            describe(fields["CommentImage"], &TestManager::getCommentImageFromBean),
        };
    }();
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
