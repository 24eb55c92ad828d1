#include "tests/transfer/TransferFixture.h"

#include <set>

namespace {

typedef std::vector<std::string> Lines;

const char kFile[] = "bean { id: 5 name: 'a.tif' }";
const char kFolder[] = "bean { id: 5 parent_id: 2 name: 'f' }";
const char kDisk[] = "bean { id: 3 name: 'd' kesta_code: 'K1' root_path: 'C:\\\\r' }";
const char kFilePath[] = "full_path: '/r/a.tif' kesta_code: 'K1'";
const char kFolderPath[] = "full_path: '/r/f' kesta_code: 'K1'";
const char kOpen[] = "open box:1 t0ken";
const char kRelease[] = "release box:1";
const char kMessage[] = " {data_class: 0 user_name: \"user\"}";

class Download : public TransferFixture
{
};

} // namespace

TEST_F(Download, ASourceThatIsNotFoundStartsNothing)
{
    const struct
    {
        int kind;
        Lines answers;
        std::string line;
    } cases[] = {
        {5, {}, "源地址错误"},
        {-1, {}, "源地址错误"},
        {2, {"result: -1"}, "源地址获取失败:type(File) ID(-2)"},
        {2, {kFile, ""}, "源地址获取失败:type(File) ID(-2)"},
        {2, {kFile, kFilePath, "status { status_code: 1 }"}, "存储器信息获取失败:code(K1)"},
        {1, {"result: -1"}, "源地址获取失败:type(Folder) ID(-2)"},
        {1, {kFolder, "result: -1"}, "源地址获取失败:type(Folder) ID(-2)"},
        {1, {"bean { id: 5 parent_id: 0 disk_id: 9 }", "result: -2"}, "源地址获取失败:type(Disk) ID(9)"},
        {0, {"result: -2"}, "源地址获取失败:type(Disk) ID(-2)"},
        {0, {kDisk, ""}, "存储器信息获取失败:code(K1)"},
    };
    for (const auto& c : cases) {
        answer(c.answers);
        EXPECT_FALSE(manager().download("DIR", qMakePair(c.kind, 4294967294u), true, callback()));
        EXPECT_EQ(taskLines("LumoDownloadRunnable"),
                  Lines{gbk(c.line) + " Func:CLumoDownloadRunnable::fetchDownloadInformation"});
        EXPECT_TRUE(m_Events.empty() && components().calls.empty());
        again();
    }
    answer({"result: -1"});
    EXPECT_FALSE(manager().downloadBySoftID("DIR", "box:1", "s", "1", true, callback()));
    answer({"result: 0 bean {}"});
    EXPECT_FALSE(manager().downloadByAppID("DIR", "box:1", "s", "1", true, callback()));
    EXPECT_TRUE(m_Events.empty() && components().calls.empty());
}

TEST_F(Download, TheWalkTellsItsEndOrOneFailureAndReleasesItsChannel)
{
    QFile::link(path("."), path("here/link"));
    const Lines fetches[] = {{kDisk, kBox}, {kFolder, kFolderPath, kBox}, {kFile, kFilePath, kBox}};
    const char noFolder[] = "Dist Dir doesn't exist and mkdir Failed : ";
    const struct
    {
        int kind;
        Lines walk;        ///< answers
        int result;        ///< of bulkhaul
        std::string event; ///< behind the start
        std::string line;  ///< of a failure, "" for none
    } cases[] = {
        {2, {kFilePath}, 0, "0 0 100", ""},
        {2, {kFilePath}, -7, "0 -7 0", "bulkhaul::Download Failed : DIR/here/a.tif"},
        {2, {"result: 1"}, 0, "0 10 0", ""},
        {2, {"full_path: '/r/..'"}, 0, "0 8 0", "bulkhaul::Download Failed : DIR/here/.."},
        {1, {"result: -1"}, 0, "0 10 0", "getFolder Failed,ID(7)"},
        {1, {kFolder, "result: -2"}, 0, "0 10 0", ""},
        {1, {kFolder, "total: 0", "result: 1"}, 0, "0 10 0", ""},
        {1, {kFolder, "total: 0", "total: 0"}, 0, "0 0 100", ""}, // an empty folder
        {1, {kFolder, "total: 1", "result: -1", "total: 0"}, 0, "0 0 100", ""},
        {1, {"bean { name: '..' }"}, 0, "0 6 0", noFolder + std::string("DIR/here/..")},
        {1, {"bean { name: '/tmp/x' }"}, 0, "0 6 0", noFolder + std::string("DIR/here//tmp/x")},
        {1, {"bean { name: 'link' }"}, 0, "0 6 0", noFolder + std::string("DIR/here/link")},
        {0, {"result: -1"}, 0, "0 10 0", "getDisk Failed,ID(7)"},
        {0, {kDisk, "result: -1"}, 0, "0 10 0", "getFolderID Failed,DiskID(3) ParentID(0) Name(d)"},
        {0, {"bean { name: 'n/d' }", "bean {}"}, 0, "0 6 0", noFolder + std::string("DIR/here/n/d")},
        {0, {kDisk, "bean { id: 8 }", "total: 0", "total: 0"}, 0, "0 0 100", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.event + " " + c.walk.back());
        for (const bool told : {true, false}) {
            answer(fetches[c.kind]);
            answer(c.walk);
            components().results = {c.result};
            const TransferCallback listener = told ? callback() : TransferCallback();
            EXPECT_TRUE(manager().download(path("here"), qMakePair(c.kind, 7u), false, listener));
            end();
            EXPECT_EQ(m_Events, told ? (Lines{"0 0 0", c.event}) : Lines());
            EXPECT_EQ(m_Channel.calls()[fetches[c.kind].size() - 1], "getKestaInfo {code: \"K1\"}");
            Lines lines;
            if (!c.line.empty())
                lines.push_back(c.line + " Func:CLumoDownloadRunnable::download");
            if (c.event != "0 0 100")
                lines.push_back("download Failed! Func:CLumoDownloadRunnable::run");
            EXPECT_EQ(taskLines("LumoDownloadRunnable"), lines);
            Lines calls = {kOpen, kRelease};
            if (c.walk[0] == kFilePath)
                calls.insert(calls.begin() + 1,
                             std::string("download /r/a.tif DIR/here/a.tif keep untold") + kMessage);
            EXPECT_EQ(maskedCalls(), calls);
            again();
        }
    }
    EXPECT_TRUE(QDir(path("here")).exists("f")) << "an empty folder is made";
    EXPECT_TRUE(QDir(path("here")).exists("d"));
}

TEST_F(Download, AFolderThatContainsItselfEndsTheWalkAfter256NestedFolders)
{
    answer({kFolder, kFolderPath, kBox});
    for (int i = 0; i < 256; ++i)
        answer({kFolder, "total: 0", "total: 1", "srctabs { id: 7 }"});
    answer({kFolder});
    EXPECT_TRUE(manager().download(path("here"), qMakePair(1, 7u), false, callback()));
    end();
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 6 0"}));
}

TEST_F(Download, AFoldersFilesComeBeforeItsSubFoldersAndTheFirstFailureEndsTheWalk)
{
    // Prepared as the disk whose top folder it is: files 1 and 2, then the folder with files 3 and 4.
    for (const char* next :
         {"bean { id: 5 parent_id: 0 disk_id: 3 }", kDisk, kBox, kDisk, "bean { id: 8 }", "total: 2",
          "filetabs { id: 1 } filetabs { id: 2 }", "total: 1", "srctabs { id: 9 }", "full_path: '/r/1'",
          "full_path: '/q/\xe4\xb8\x80'", "bean { id: 9 name: ':\xe4\xb8\x80' }", "total: 2",
          "filetabs { id: 3 } filetabs { id: 4 }", "total: 0", "full_path: '/r/s/:3'"})
        answer({next});
    components().results = {0, 0, 209};
    EXPECT_TRUE(manager().download(path("here") + "\\", qMakePair(1, 5u), true, callback()));
    end();
    const std::string rest = std::string(" replace untold") + kMessage;
    EXPECT_EQ(maskedCalls(), (Lines{kOpen, "download /r/1 DIR/here/d/1" + rest,
                                    "download /q/\xe4\xb8\x80 DIR/here/d/\xe4\xb8\x80" + rest,
                                    "download /r/s/:3 DIR/here/d/:\xe4\xb8\x80/:3" + rest, kRelease}));
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 209 0"}));
    EXPECT_EQ(m_Channel.calls()[3], "queryDataAddressByID {record_id: 3}") << "walked as the disk";
    EXPECT_EQ(m_TaskIDs[0].substr(0, 2), "d{");
    EXPECT_TRUE(QFileInfo(path(QString::fromUtf8("here/d/:\xe4\xb8\x80"))).isDir());
}

TEST_F(Download, APathIsMovedWholeAndTellsWhatTheClientReports)
{
    std::set<std::string> taskIDs;
    const struct
    {
        const char* localDir;
        const char* source;
        bool overwrite;
        const char* call; ///< of bulkhaul
        int result;
        Lines events;
    } cases[] = {
        {"here", "/p/q.zip", false, "/p/q.zip here/q.zip keep", 0, {"0 0 0", "0 0 37", "0 3 100"}},
        {"here", "/p/q.zip", true, "/p/q.zip here/q.zip replace", 0, {"0 0 0", "0 0 37", "0 3 100"}},
        {"here/", "C:\\\\p\\\\q", true, "C:/p/q here/q replace", 0, {"0 0 0", "0 0 37", "0 3 100"}},
        {"here\\", "q", false, "q here/q keep", 5, {"0 0 0", "0 0 37", "0 3 100", "0 999 0"}},
        {"", "/p/q", false, "/p/q /q keep", 0, {"0 0 0", "0 0 37", "0 3 100"}},
        {"here", "/p/..", false, "/p/.. here/.. keep", 210, {"0 0 0", "0 0 37", "0 3 100", "0 999 0"}},
    };
    for (const auto& c : cases) {
        answer({std::string("bean { app_full_path: '") + c.source + "' }"});
        components().results = {c.result};
        components().reports = {{0, 37}, {3, 100}};
        EXPECT_TRUE(manager().downloadBySoftID(c.localDir, "box:1", "s", "1", c.overwrite, callback()));
        end();
        EXPECT_EQ(m_Events, c.events);
        EXPECT_EQ(
            maskedCalls(),
            (Lines{kOpen, std::string("download ") + c.call + " told {data_class: 1 user_name: \"user\"}",
                   kRelease}));
        Lines lines(2, "Upload RPC TaskID : rpc, Inner TaskID : " + masked(m_TaskIDs[0]) +
                           " Func:downloadCallBack");
        if (c.events.back() == "0 999 0")
            lines.push_back("bulkhaul::Download Failed! Func:CLumoDownloadRunnable::run");
        EXPECT_EQ(taskLines("LumoDownloadRunnable"), lines);
        EXPECT_EQ(std::set<std::string>(m_TaskIDs.begin(), m_TaskIDs.end()).size(), 1u);
        EXPECT_TRUE(taskIDs.insert(m_TaskIDs[0]).second) << "of another transfer";
        again();
    }
}

TEST_F(Download, WithoutACallbackTheLogTellsTheState)
{
    answer({"bean { app_full_path: '/p/q' }"});
    components().reports = {{0, 0}, {0, 1}, {0, 100}, {-1, 100}};
    components().results = {1};
    EXPECT_TRUE(manager().downloadByAppID("here", "box:1", "m", "1", true, TransferCallback()));
    end();
    Lines lines;
    for (const char* state : {"Started", "Running", "Successed", "Failed"}) {
        lines.push_back("Upload RPC TaskID : rpc, Inner TaskID : qID Func:downloadCallBack");
        lines.push_back("Download Task is " + std::string(state) + "! Func:downloadCallBack");
    }
    lines.push_back("bulkhaul::Download Failed! Func:CLumoDownloadRunnable::run");
    EXPECT_EQ(taskLines("LumoDownloadRunnable"), lines);
}

TEST_F(Download, WithoutAChannelItEndsWith101)
{
    components().opened.reset();
    components().code = 3;
    answer({kFile, kFilePath, kBox, "bean { app_full_path: '/p/q' }"});
    EXPECT_TRUE(manager().download("here", qMakePair(2, 7u), true, callback()));
    EXPECT_TRUE(manager().downloadByAppID("here", "box:1", "m", "1", true, TransferCallback()));
    end();
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 101 0"}));
    EXPECT_EQ(components().calls, (Lines{kOpen, kOpen}));
}
