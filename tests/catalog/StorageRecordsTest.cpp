#include "ledger_requests.pb.h"
#include "ledger_storage.pb.h"
#include "tests/support/TestManager.h"

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

// The layout of the records is the interface: an application was compiled against it.
static_assert(sizeof(tagDiskTable) == 648 && offsetof(tagDiskTable, kestaCode) == 8 &&
              offsetof(tagDiskTable, diskName) == 136 && offsetof(tagDiskTable, rootPath) == 392);
static_assert(sizeof(tagFolderTable) == 364 && offsetof(tagFolderTable, diskID) == 4 &&
              offsetof(tagFolderTable, parentID) == 8 && offsetof(tagFolderTable, folderName) == 12 &&
              offsetof(tagFolderTable, shortText) == 268 && offsetof(tagFolderTable, longText) == 300);
static_assert(sizeof(tagFileTable) == 360 && offsetof(tagFileTable, parentID) == 4 &&
              offsetof(tagFileTable, fileName) == 8 && offsetof(tagFileTable, shortText) == 264 &&
              offsetof(tagFileTable, longText) == 296);

namespace {

template <class Bean>
Bean bean(const std::string& text)
{
    Bean parsed;
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(text, &parsed)) << text;
    return parsed;
}

/// A record whose every byte is 0x55, so that what a conversion leaves alone shows.
template <class Record>
Record marked()
{
    Record record;
    std::memset(static_cast<void*>(&record), 0x55, sizeof record);
    return record;
}

template <std::size_t Size>
bool zeroed(const char (&field)[Size])
{
    return std::string(field, Size) == std::string(Size, '\0');
}

} // namespace

TEST(StorageRecords, EachFieldComesFromItsOwn)
{
    auto disk = marked<tagDiskTable>();
    TestManager::getDiskFromBean(bean<ledgerserver::DataAddressBean>(
                                     "id: 1 root_path: 'root' name: 'disk' ref_id: 2 kesta_code: 'code'"),
                                 disk);
    EXPECT_EQ(disk.diskID, 1u);
    EXPECT_EQ(disk.refID, 2u);
    EXPECT_STREQ(disk.kestaCode, "code");
    EXPECT_STREQ(disk.diskName, "disk");
    EXPECT_STREQ(disk.rootPath, "root");

    auto folder = marked<tagFolderTable>();
    TestManager::getFolderFromBean(
        bean<ledgerserver::SrcTableBean>(
            "id: 1 parent_id: 2 name: 'folder' long_text: 'long' short_text: 'short' disk_id: 3"),
        folder);
    EXPECT_EQ(folder.folderID, 1u);
    EXPECT_EQ(folder.parentID, 2u);
    EXPECT_EQ(folder.diskID, 3u);
    EXPECT_STREQ(folder.folderName, "folder");
    EXPECT_STREQ(folder.shortText, "short");
    EXPECT_STREQ(folder.longText, "long");

    auto file = marked<tagFileTable>();
    TestManager::getFileFromBean(
        bean<ledgerserver::FileTableBean>(
            "id: 1 parent_id: 2 name: '\xe5\xbd\xb1' long_text: 'long' short_text: 'short'"),
        file);
    EXPECT_EQ(file.fileID, 1u);
    EXPECT_EQ(file.parentID, 2u);
    EXPECT_STREQ(file.fileName, "\xd3\xb0") << "in GBK";
    EXPECT_STREQ(file.shortText, "short");
    EXPECT_STREQ(file.longText, "long");
}

TEST(StorageRecords, MessageFieldsStandAtTheirPlaces)
{
    using namespace ledgerserver;
    const struct
    {
        const google::protobuf::Descriptor* message;
        std::vector<std::pair<int, const char*>> fields;
    } cases[] = {
        {DataAddressBean::descriptor(),
         {{0, "id"}, {1, "root_path"}, {2, "name"}, {4, "ref_id"}, {7, "kesta_code"}}},
        {SrcTableBean::descriptor(),
         {{0, "id"}, {1, "parent_id"}, {2, "name"}, {3, "long_text"}, {4, "short_text"}, {6, "disk_id"}}},
        {FileTableBean::descriptor(),
         {{0, "id"}, {1, "parent_id"}, {2, "name"}, {4, "short_text"}, {5, "long_text"}}},
        {DataUtilBeanReq::descriptor(),
         {{0, "project_id"},     {1, "type_id"},      {2, "record_id"},   {3, "file_id"},
          {4, "src_id"},         {6, "data_type_id"}, {7, "page_start"},  {8, "page_size"},
          {17, "bound_a"},       {18, "bound_b"},     {19, "bound_c"},    {20, "bound_d"},
          {21, "use_bounds"},    {22, "dqcon_id"},    {26, "comment_id"}, {30, "parent_src_id"},
          {40, "checkdatabean"}, {42, "area_id"},     {44, "comm_id"},    {54, "company_id"},
          {55, "address_kind"}}},
        {CheckDataBean::descriptor(), {{14, "dqcon_id"}, {17, "company_id"}, {18, "project_id"}}},
    };
    for (const auto& c : cases) {
        for (const auto& [place, name] : c.fields) {
            EXPECT_EQ(c.message->field(place)->name(), name);
            EXPECT_EQ(c.message->field(place)->number(), place + 1);
        }
    }
}

TEST(StorageRecords, AnEmptyBeanGivesNoIdentifierAndZeroedTexts)
{
    auto disk = marked<tagDiskTable>();
    TestManager::getDiskFromBean(ledgerserver::DataAddressBean(), disk);
    EXPECT_EQ(disk.diskID & disk.refID, 0xFFFFFFFF);
    EXPECT_TRUE(zeroed(disk.kestaCode) && zeroed(disk.diskName) && zeroed(disk.rootPath));
    auto folder = marked<tagFolderTable>();
    TestManager::getFolderFromBean(ledgerserver::SrcTableBean(), folder);
    EXPECT_EQ(folder.folderID & folder.parentID & folder.diskID, 0xFFFFFFFF);
    EXPECT_TRUE(zeroed(folder.folderName) && zeroed(folder.shortText) && zeroed(folder.longText));
    auto file = marked<tagFileTable>();
    TestManager::getFileFromBean(ledgerserver::FileTableBean(), file);
    EXPECT_EQ(file.fileID & file.parentID, 0xFFFFFFFF);
    EXPECT_TRUE(zeroed(file.fileName) && zeroed(file.shortText) && zeroed(file.longText));
}

TEST(StorageRecords, ATextTooLongLeavesItsFieldAloneAndNoOther)
{
    const std::string folderText = "name: '" + std::string(255, 'n') + "' short_text: '" +
                                   std::string(31, 's') + "' long_text: '" + std::string(62, 'l') + "' id: 1";
    auto folder = marked<tagFolderTable>();
    TestManager::getFolderFromBean(bean<ledgerserver::SrcTableBean>(folderText), folder);
    EXPECT_EQ(folder.folderID, 1u);
    EXPECT_EQ(std::string(folder.folderName, sizeof folder.folderName), std::string(256, 0x55));
    EXPECT_EQ(std::string(folder.shortText, sizeof folder.shortText), std::string(32, 0x55));
    EXPECT_EQ(std::string(folder.longText), std::string(62, 'l'));

    // What counts is the length in the code page: 100 characters are 300 bytes of UTF-8, 200 of GBK.
    std::string chinese;
    for (int i = 0; i < 100; ++i)
        chinese += "\xe5\xbd\xb1";
    auto file = marked<tagFileTable>();
    TestManager::getFileFromBean(bean<ledgerserver::FileTableBean>("name: '" + chinese + "'"), file);
    EXPECT_EQ(std::strlen(file.fileName), 200u);
}
