#include "ledgerserver.pb.h"
#include "lumo/components/platform/CodePage.h"
#include "tests/support/TestManager.h"

#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <langinfo.h>
#include <locale.h>
#include <memory>
#include <sstream>

using namespace ledgerserver;

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

constexpr char kMark = 0x55;

/// A field of a record: its sort, its place in the bean and where it lies.
struct Field
{
    char sort;    ///< key, text, optional double (d) and integer (i), number, code, word of bits, pointer
    int place;    ///< -1 where no bean's field fills it
    int capacity; ///< of a text
    std::size_t offset;
    std::size_t size;
    int bit; ///< of an optional number
};

struct Layout
{
    const char* record;
    const Message* bean; ///< empty
    std::size_t size;
    std::function<void(const Message&, void*)> convert;
    std::vector<Field> fields; ///< in declared order
};

/// Reads "k3" (a key from place 3), "t32@4" (a text in 32 bytes), "t64/256@2" (in 64 of 256 bytes) ...
Field read(const std::string& word)
{
    Field field{word[0], -1, 0, 0, 8, -1};
    std::istringstream text(word.substr(1));
    char separator = '@';
    switch (field.sort) {
    case 't':
        text >> field.capacity >> separator;
        field.size = static_cast<std::size_t>(field.capacity);
        if (separator == '/')
            text >> field.size >> separator;
        text >> field.place;
        break;
    case 'w':
        text >> field.size;
        field.size /= 8;
        break;
    case 'p':
        break;
    default:
        text >> field.place;
        field.size = field.sort == 'd' || field.sort == 'n' ? sizeof(double) : sizeof(int);
    }
    EXPECT_FALSE(text.fail() && field.sort != 'p') << word;
    return field;
}

template <class Record, class Bean>
Layout describe(const char* name, void (*convert)(const Bean&, Record&), const std::string& fields)
{
    Layout layout{name,
                  &Bean::default_instance(),
                  sizeof(Record),
                  [convert](const Message& bean, void* record) {
                      convert(static_cast<const Bean&>(bean), *static_cast<Record*>(record));
                  },
                  {}};
    std::istringstream words(fields);
    std::size_t end = 0;
    int bit = 0;
    for (std::string word; words >> word;) {
        if (word == "|") { // an embedded record of doubles begins
            end = (end + 7) / 8 * 8;
            continue;
        }
        Field field = read(word);
        const std::size_t alignment = field.sort == 't' ? 1 : field.size;
        field.offset = (end + alignment - 1) / alignment * alignment;
        end = field.offset + field.size;
        if (field.sort == 'd' || field.sort == 'i')
            field.bit = bit++;
        layout.fields.push_back(field);
    }
    EXPECT_EQ((end + alignof(Record) - 1) / alignof(Record) * alignof(Record), sizeof(Record)) << name;
    return layout;
}

const std::vector<Layout>& layouts()
{
    static const std::vector<Layout> all = {
        describe<tagDiskTable, DataAddressBean>("tagDiskTable", &TestManager::getDiskFromBean,
                                                "k0 k4 t128@7 t256@2 t256@1"),
        describe<tagFolderTable, SrcTableBean>("tagFolderTable", &TestManager::getFolderFromBean,
                                               "k0 k6 k1 t256@2 t32@4 t64@3"),
        describe<tagFileTable, FileTableBean>("tagFileTable", &TestManager::getFileFromBean,
                                              "k0 k1 t256@2 t32@4 t64@5"),
        describe<tagDataTable, DataSrcBean>(
            "tagDataTable", &TestManager::getDataFromBean,
            "k0 k40 t256@1 t32@3 t32@4 t64@5 t64@6 t64@7 t64@37 t32@38 t32@39 | c12 c14 n15 n16 n18 n20 "
            "n19 n22 n21 n35 c24 t512@36 n29 n30 n31 n32 n33 n34 n35"),
        describe<tagTypeTable, DataSrcTypeBean>("tagTypeTable", &TestManager::getDataTypeFromBean,
                                                "k0 k1 t64@3 t64/256@2 t32@4"),
        describe<tagKFImageTable, DataSrcPhotoBean>(
            "tagKFImageTable", &TestManager::getKFImageDataFromBean,
            "k0 k1 t256@2 t128@51 t128@3 t16@4 t32@5 t16@6 t32@7 t16@8 t64@22 w16 d9 d12 d15 d16 d17 "
            "d18 d19 d20 d10 d11 i13 i14 d21 d23 d49 d50 | c24 c26 n27 n28 n30 n47 n31 n35 n34 n45 c48 "
            "t512@46 n39 n40 n41 n42 n43 n44 n45"),
        describe<tagSatTable, DataSrcSatBean>(
            "tagSatTable", &TestManager::getSatImageDataFromBean,
            "k0 k1 t256@2 t128@48 t128@3 t16@4 t32@6 t16@18 t16@21 t64@22 w16 d5 d7 d8 d13 d14 d17 "
            "i19 i20 d15 d9 d10 d11 d12 d16 | c23 c25 n26 n27 n29 n46 n30 n34 n33 n44 c47 t512@45 n38 "
            "n39 n40 n41 n42 n43 n44"),
        describe<tagAdsTable, DataSrcAdsBean>(
            "tagAdsTable", &TestManager::getAdsImageDataFromBean,
            "k0 k1 t256@2 t128@43 t128@3 t16@4 t32@16 t16@12 t16@13 t8@15 t64@42 w16 d14 d5 d6 d7 d8 "
            "d11 i9 i10 | c17 c19 n20 n21 n23 n40 n24 n28 n27 n38 c41 t512@39 n32 n33 n34 n35 n36 n37 "
            "n38"),
        describe<tagDemTable, DataSrcDemBean>(
            "tagDemTable", &TestManager::getDemDataFromBean,
            "k0 k1 t256@2 t128@63 t128@3 t16@5 t32@7 t16@8 t16@9 t128@18 t128@20 t128@23 t128@25 "
            "t128@19 t128@24 t128@21 t128@22 t32@41 t64@47 w32 d10 d11 d12 d13 d14 d15 d16 d17 d26 "
            "d27 d28 d4 d62 i6 i42 i43 i44 d45 i39 i40 | c31 c32 n49 n50 n30 n51 n33 n53 n52 n60 c46 "
            "t512@61 n54 n55 n56 n57 n58 n59 n60"),
        describe<tagDsmTable, DataSrcDsmBean>(
            "tagDsmTable", &TestManager::getDsmDataFromBean,
            "k0 k1 t256@2 t128@51 t128@3 t16@5 t32@7 t16@8 t16@9 t32@30 t32@31 t64@29 w32 d4 d10 d11 "
            "d12 d13 d14 d15 d16 d17 d50 i6 i32 i33 i34 i35 | c20 c21 n37 n38 n19 n39 n22 n41 n40 n48 "
            "c28 t512@49 n42 n43 n44 n45 n46 n47 n48"),
        describe<tagDomTable, DataSrcDomBean>(
            "tagDomTable", &TestManager::getDomDataFromBean,
            "k0 k1 t256@2 t128@63 t128@3 t16@5 t32@7 t16@8 t16@9 t128@18 t128@20 t128@23 t128@25 "
            "t128@19 t128@24 t128@21 t128@22 t16@36 t32@45 t32@46 t64@44 w32 d4 d62 d10 d11 d12 d13 "
            "d14 d15 d16 d17 i6 i39 i37 i38 i40 i41 i42 i47 | c28 c29 n49 n50 n27 n51 n30 n53 n52 n60 "
            "c43 t512@61 n54 n55 n56 n57 n58 n59 n60"),
        describe<tagDlgTable, DataSrcDlgBean>(
            "tagDlgTable", &TestManager::getDlgDataFromBean,
            "k0 k1 t256@2 t128@64 t128@3 t16@5 t32@7 t16@59 t16@8 t16@9 t128@18 t128@20 t128@23 "
            "t128@25 t128@19 t128@24 t128@21 t128@22 t256@36 t64@43 w32 d4 d10 d11 d12 d13 d14 d15 "
            "d16 d17 d63 i6 i37 i38 i39 i40 i41 i62 i60 i61 i44 | c28 c29 n46 n47 n27 n48 n30 n50 n49 "
            "n57 c42 t512@58 n51 n52 n53 n54 n55 n56 n57"),
        describe<tagCtrlFileTable, DataSrcControlBean>(
            "tagCtrlFileTable", &TestManager::getCtrlFileDataFromBean,
            "k0 k1 t256@2 t256@3 t256@4 t64@33 t64@34 t64@35 t32@37 t32@36 t128@38 t64@24 w16 d5 | c7 "
            "c9 n10 n11 n13 n22 n14 n18 n17 n31 c23 t512@32 n25 n26 n27 n28 n29 n30 n31"),
        describe<tagCtrlPointTable, DataSrcControlInfoBean>(
            "tagCtrlPointTable",
            [](const auto& bean, auto& point) {
                TestManager::getCtrlPointDataFromBean(bean, point, nullptr);
            },
            "p k0 k1 t32@2 t512@6 w16 d3 d4 d5"),
    };
    return all;
}

/// A record whose every byte is kMark, so that what a conversion leaves alone shows.
class Record
{
public:
    explicit Record(const Layout& layout) : m_Layout(layout), m_Bytes(layout.size, kMark) {}

    Record& convert(const Message& bean)
    {
        m_Layout.convert(bean, m_Bytes.data());
        return *this;
    }

    template <class Value>
    Value as(const Field& field) const
    {
        Value value;
        std::memcpy(&value, m_Bytes.data() + field.offset, sizeof value);
        return value;
    }

    std::string bytes(const Field& field) const { return {m_Bytes.data() + field.offset, field.size}; }
    bool isMarked(const Field& field) const { return bytes(field) == std::string(field.size, kMark); }
    bool isZeroed(const Field& field) const
    {
        const std::size_t capacity = static_cast<std::size_t>(field.capacity);
        return bytes(field) == std::string(capacity, '\0') + std::string(field.size - capacity, kMark);
    }

    /// The bits that the kind uses; the conversion must leave the others.
    unsigned int presence() const
    {
        for (const Field& word : m_Layout.fields) {
            if (word.sort != 'w')
                continue;
            const auto last = std::max_element(m_Layout.fields.begin(), m_Layout.fields.end(),
                                               [](const Field& a, const Field& b) { return a.bit < b.bit; });
            const std::uint64_t own = (std::uint64_t{2} << last->bit) - 1;
            const std::uint64_t width = (std::uint64_t{1} << (8 * word.size)) - 1;
            const std::uint64_t value = word.size == 2 ? as<std::uint16_t>(word) : as<std::uint32_t>(word);
            EXPECT_EQ(value & ~own, 0x55555555 & ~own & width);
            return static_cast<unsigned int>(value & own);
        }
        return 0;
    }

private:
    const Layout& m_Layout;
    std::string m_Bytes;
};

typedef std::unique_ptr<Message> Bean;

Bean beanOf(const Layout& layout)
{
    return Bean(layout.bean->New());
}

void setText(Message& bean, int place, const std::string& text)
{
    bean.GetReflection()->SetString(&bean, bean.GetDescriptor()->field(place), text);
}

bool isText(const Message& bean, int place)
{
    return bean.GetDescriptor()->field(place)->cpp_type() == FieldDescriptor::CPPTYPE_STRING;
}

/// A bean with a value of its own at each place: a text "place.25", a key of place + 1000.
Bean filled(const Layout& layout)
{
    Bean bean = beanOf(layout);
    for (int place = 0; place < bean->GetDescriptor()->field_count(); ++place) {
        const FieldDescriptor* field = bean->GetDescriptor()->field(place);
        EXPECT_EQ(field->number(), place + 1);
        if (isText(*bean, place))
            setText(*bean, place, std::to_string(place) + ".25");
        else if (field->cpp_type() == FieldDescriptor::CPPTYPE_INT32)
            bean->GetReflection()->SetInt32(bean.get(), field, place + 1000);
        else
            bean->GetReflection()->SetUInt32(bean.get(), field, static_cast<unsigned int>(place) + 1000);
    }
    return bean;
}

/// Calls `check` with each field of each record.
void forEachField(const std::function<void(const Layout&, const Field&)>& check)
{
    for (const Layout& layout : layouts()) {
        for (const Field& field : layout.fields) {
            SCOPED_TRACE(layout.record + std::string(" ") + field.sort + std::to_string(field.place));
            check(layout, field);
        }
    }
}

TEST(RecordConversion, EachFieldComesFromItsOwnPlace)
{
    forEachField([&](const Layout& layout, const Field& field) {
        const Record record = Record(layout).convert(*filled(layout));
        switch (field.sort) {
        case 'k':
            EXPECT_EQ(record.as<int>(field), field.place + 1000);
            break;
        case 't':
            EXPECT_STREQ(record.bytes(field).c_str(), (std::to_string(field.place) + ".25").c_str());
            break;
        case 'd':
        case 'n':
            EXPECT_EQ(record.as<double>(field), field.place + 0.25);
            break;
        case 'i':
            EXPECT_EQ(record.as<int>(field), field.place);
            break;
        case 'c':
            EXPECT_EQ(record.as<int>(field), -1) << "a text in no table";
            break;
        case 'p':
            EXPECT_EQ(record.as<void*>(field), nullptr);
        }
    });
}

TEST(RecordConversion, AbsentFieldsAndEmptyTextsGetTheirDefaultsAndOptionalNumbersStay)
{
    forEachField([&](const Layout& layout, const Field& field) {
        const Bean absent = beanOf(layout);
        const Bean empty = beanOf(layout);
        for (int place = 0; place < empty->GetDescriptor()->field_count(); ++place)
            if (isText(*empty, place))
                setText(*empty, place, "");
        for (const Bean* bean : {&absent, &empty}) {
            const Record record = Record(layout).convert(**bean);
            switch (field.sort) {
            case 'k':
                EXPECT_EQ(record.as<unsigned int>(field), 0xFFFFFFFF);
                break;
            case 't':
                EXPECT_TRUE(record.isZeroed(field));
                break;
            case 'n':
                EXPECT_EQ(record.as<double>(field), 0.0);
                break;
            case 'c':
                EXPECT_EQ(record.as<int>(field), -1);
                break;
            case 'd':
            case 'i':
                EXPECT_TRUE(record.isMarked(field));
                break;
            case 'w':
                EXPECT_EQ(record.presence(), 0u);
            }
        }
    });
}

TEST(RecordConversion, EachOptionalNumberHasABitOfItsOwn)
{
    forEachField([&](const Layout& layout, const Field& field) {
        if (field.bit < 0)
            return;
        const Bean bean = beanOf(layout);
        setText(*bean, field.place, "0");
        Record record(layout);
        EXPECT_EQ(record.convert(*bean).presence(), 1u << field.bit) << "zero is a value";
        setText(*bean, field.place, "letters");
        EXPECT_EQ(record.convert(*bean).presence(), 1u << field.bit);
        EXPECT_EQ(record.bytes(field), std::string(field.size, '\0'));
        EXPECT_EQ(record.convert(*filled(layout)).convert(*beanOf(layout)).presence(), 0u);
        EXPECT_TRUE(field.sort != 'd' || record.as<double>(field) == field.place + 0.25)
            << "the first bean's";
    });
}

TEST(RecordConversion, ATextThatDoesNotFitLeavesItsFieldAloneAndNoOther)
{
    forEachField([&](const Layout& layout, const Field& field) {
        if (field.sort != 't')
            return;
        const Bean bean = filled(layout);
        const std::string longest(static_cast<std::size_t>(field.capacity) - 2, 'x');
        setText(*bean, field.place, longest);
        EXPECT_EQ(Record(layout).convert(*bean).bytes(field).c_str(), longest);
        setText(*bean, field.place, longest + 'x');
        const Record refused = Record(layout).convert(*bean);
        EXPECT_TRUE(refused.isMarked(field));
        const Field& last = layout.fields.back();
        EXPECT_TRUE(last.offset == field.offset || !refused.isMarked(last));
    });
}

TEST(RecordConversion, CodesAreToldFromTheirTextsWholeAndInGbkOnly)
{
    const std::vector<std::vector<std::string>> tables = {
        {"WGS84", "北京54", "西安80", "中国2000", "自定义"},
        {"经纬度", "TM投影", "高斯投影", "UTM投影", "兰波特等角投影", "地心直角坐标"},
        {"南半球", "北半球"}};
    int table = 0;
    forEachField([&](const Layout& layout, const Field& field) {
        if (field.sort != 'c')
            return;
        const Bean bean = beanOf(layout);
        const auto code = [&](const std::string& text) {
            setText(*bean, field.place, text);
            return Record(layout).convert(*bean).as<int>(field);
        };
        const std::vector<std::string>& texts = tables[static_cast<std::size_t>(table++ % 3)];
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(code(texts[i]), static_cast<int>(i)) << texts[i];
            EXPECT_EQ(code(texts[i] + " "), -1);
        }
        EXPECT_EQ(code("wgs84"), -1);
        EXPECT_TRUE(platform::setSystemCodePage(platform::kUtf8CodePage));
        EXPECT_EQ(code(texts.back()), -1);
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
    std::string chinese; // 300 bytes of UTF-8, 200 of GBK
    for (int i = 0; i < 100; ++i)
        chinese += "影";
    FileTableBean bean;
    bean.set_name(chinese);
    tagFileTable file;
    TestManager::getFileFromBean(bean, file);
    EXPECT_EQ(std::strlen(file.fileName), 200u);
    EXPECT_EQ(std::string(file.fileName, 2), "\xd3\xb0");
}

} // namespace

TEST(RequestMessages, FieldsStandAtTheirPlaces)
{
    const struct
    {
        const google::protobuf::Descriptor* message;
        std::vector<std::pair<int, const char*>> fields;
    } kCases[] = {
        {DataUtilBeanReq::descriptor(),
         {{0, "project_id"},     {1, "type_id"},      {2, "record_id"},   {3, "file_id"},
          {4, "src_id"},         {6, "data_type_id"}, {7, "page_start"},  {8, "page_size"},
          {17, "bound_a"},       {18, "bound_b"},     {19, "bound_c"},    {20, "bound_d"},
          {21, "use_bounds"},    {22, "dqcon_id"},    {26, "comment_id"}, {30, "parent_src_id"},
          {40, "checkdatabean"}, {42, "area_id"},     {44, "comm_id"},    {54, "company_id"},
          {55, "address_kind"}}},
        {CheckDataBean::descriptor(), {{14, "dqcon_id"}, {17, "company_id"}, {18, "project_id"}}},
    };
    for (const auto& one : kCases) {
        for (const auto& [place, name] : one.fields) {
            EXPECT_EQ(one.message->field(place)->name(), name);
            EXPECT_EQ(one.message->field(place)->number(), place + 1);
        }
    }
}
