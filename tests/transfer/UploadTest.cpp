#include "tests/transfer/TransferFixture.h"
#include "transfer/LumoUploadRunnable.h"

namespace {

typedef std::vector<std::string> Lines;

const char kSlashedDisk[] = "bean { id: 3 name: 'd' kesta_code: 'K1' root_path: 'C:\\\\r\\\\' }";

class Upload : public TransferFixture
{
};

} // namespace

TEST_F(Upload, ADestinationThatIsNotFoundStartsNothing)
{
    const struct
    {
        int kind;
        Lines answers;
        const char* line;
    } cases[] = {
        {2, {}, "目的地址错误:type(2) ID(-2)"},
        {-1, {}, "目的地址错误:type(-1) ID(-2)"},
        {1, {"result: -1"}, "目的地址获取失败:type(1) ID(-2)"},
        {0, {"result: -1"}, "目的地址获取失败:type(0) ID(-2)"},
        {0, {kSlashedDisk, "result: -1"}, "目的地址获取失败:type(0) ID(-2)"},
        {1, {"full_path: '/r' kesta_code: 'K1'", ""}, "存储器信息获取失败:code(K1)"},
    };
    for (const auto& c : cases) {
        answer(c.answers);
        EXPECT_FALSE(manager().upload("a", qMakePair(c.kind, 4294967294u), 1, true, callback()));
        EXPECT_EQ(taskLines("LumoUploadRunnable"),
                  Lines{gbk(c.line) + " Func:CLumoUploadRunnable::fetchUploadInformation"});
        EXPECT_TRUE(m_Events.empty() && components().calls.empty());
        again();
    }
}

TEST_F(Upload, OneCallMovesTheWholePathAndTellsWhatTheClientReports)
{
    const Lines toFolder = {"full_path: 'C:\\\\r\\\\' kesta_code: 'K1'", kBox};
    const Lines toSlashed = {"full_path: '/r\\\\s/' kesta_code: 'K1'", kBox};
    const Lines toDisk = {kSlashedDisk, "bean { id: 8 }", kBox};
    const Lines toRoot = {"bean { id: 3 name: 'd' kesta_code: 'K1' root_path: '/' }", "bean { id: 8 }", kBox};
    const Lines withoutRoot = {"bean { id: 3 name: 'd' kesta_code: 'K1' }", "bean { id: 8 }", kBox};
    const Lines toTooLong = {"bean { id: 3 name: 'd' kesta_code: 'K1' root_path: '" + std::string(255, 'r') +
                                 "' }",
                             "bean { id: 8 }", kBox};
    const Lines reported = {"1 0 0", "1 0 5", "1 7 100"};
    const struct
    {
        Lines answers;
        int kind;
        const char* localPath;
        const char* name; ///< at the head of the identifier
        unsigned int extraID;
        const char* paths; ///< in the call of bulkhaul
        const char* message;
        int result;
        Lines events;
    } cases[] = {
        {toFolder, 1, "a\\b.tif", "b.tif", 0, "C:/r/b.tif a/b.tif", "folder_id: 7 extra_id: 0", 0, reported},
        {toFolder, 1, "here\\too.tif", "here\\too.tif", 0, "C:/r/here\\too.tif here\\too.tif",
         "folder_id: 7 extra_id: 0", 0, reported},
        {toSlashed, 1, "a/b", "b", 0, "/r\\s/b a/b", "folder_id: 7 extra_id: 0", 0, reported},
        {toFolder, 1, "a/b/", "b", 0xFFFFFFFF, "C:/r/b a/b", "folder_id: 7", 0, reported},
        {toFolder, 1, "a/:b", ":b", 0, "C:/r/:b a/:b", "folder_id: 7 extra_id: 0", 0, reported},
        {toFolder, 1, "a/b//", "b", 0, "C:/r/b a/b", "folder_id: 7 extra_id: 0", 0, reported},
        {withoutRoot, 0, "a/b", "b", 0, "./b a/b", "folder_id: 8 extra_id: 0", 0, reported},
        {toTooLong, 0, "a/b", "b", 0, "./b a/b", "folder_id: 8 extra_id: 0", 0, reported},
        {toRoot, 0, "a/b", "b", 0, "/b a/b", "folder_id: 8 extra_id: 0", 0, reported},
        {toDisk,
         0,
         "\xe4\xb8\x80",
         "\xd2\xbb",
         9,
         "C:/r/\xe4\xb8\x80 \xe4\xb8\x80",
         "folder_id: 8 extra_id: 9",
         203,
         {"1 0 0", "1 0 5", "1 7 100", "1 999 0"}},
    };
    QFile here("here\\too.tif"); // that this is here tells a name from a path
    ASSERT_TRUE(here.open(QIODevice::WriteOnly));
    for (const auto& c : cases)
        for (const bool told : {true, false}) {
            answer(c.answers);
            components().results = {c.result};
            components().reports = {{0, 5}, {7, 100}};
            EXPECT_TRUE(manager().upload(QString::fromUtf8(c.localPath), qMakePair(c.kind, 7u), c.extraID,
                                         !told, told ? callback() : TransferCallback()));
            end();
            EXPECT_EQ(m_Events, told ? c.events : Lines());
            EXPECT_EQ(m_Channel.calls().back(), "getKestaInfo {code: \"K1\"}");
            EXPECT_EQ(maskedCalls(),
                      (Lines{"open box:1 t0ken",
                             std::string("upload ") + c.paths + (told ? " keep" : " replace") +
                                 " told {data_class: 0 user_name: \"user\" auth_flag: true auth_mode: 1 " +
                                 c.message + "}",
                             "release box:1"}));
            const Lines lines = taskLines("LumoUploadRunnable");
            ASSERT_EQ(lines.size(), c.result == 0 ? 2u : 3u) << "no lines of state";
            EXPECT_EQ(lines[1], std::string("Upload RPC TaskID : rpc, Inner TaskID : ") + c.name +
                                    "ID Func:uploadCallback");
            if (c.result != 0)
                EXPECT_EQ(lines[2], "bulkhaul::Upload Failed! Func:CLumoUploadRunnable::run");
            again();
        }
}

TEST_F(Upload, TwoOfOneSourceHaveTwoIdentifiersAndWithoutAChannelEndWith101)
{
    components().opened.reset();
    components().code = 4;
    answer({"full_path: '/r'", kBox});
    EXPECT_TRUE(manager().upload("a/b", qMakePair(1, 7u), 0, true, callback()));
    end();
    const std::string first = m_TaskIDs[0];
    EXPECT_EQ(m_Events, (Lines{"1 0 0", "1 101 0"}));
    EXPECT_EQ(components().calls, Lines{"open box:1 t0ken"});
    answer({"full_path: '/r'", kBox});
    EXPECT_TRUE(manager().upload("a/b", qMakePair(1, 7u), 0, true, callback()));
    end();
    EXPECT_EQ(masked(first), "bID");
    EXPECT_NE(first, m_TaskIDs.back());
}

TEST_F(Upload, ARelativePathLiesBelowTheDestination)
{
    answer({"full_path: '/r'", kBox});
    CLumoUploadRunnable task("x\\y\\", true, false, 0xFFFFFFFF, TransferCallback());
    ASSERT_TRUE(task.fetchUploadInformation("a", qMakePair(1, 7u)));
    task.run();
    EXPECT_EQ(components().calls[1],
              "upload /r/x/y/a a replace told {data_class: 0 user_name: \"user\" auth_flag: "
              "false auth_mode: 1 folder_id: 7 relative_path: \"x/y\"}");
}
