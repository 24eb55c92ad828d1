#include "lumo/components/hubline/Hubline.h"
#include "tests/centre/CentreSupport.h"
#include "tests/support/Awaited.h"
#include "tests/support/Certificate.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <QProcess>
#include <QTextCodec>

#include <filesystem>
#include <string>

namespace {

/// A centre with the disk "盘" of a small tree, and a manager that is logged in there.
class EndToEnd : public CentreTest
{
protected:
    EndToEnd() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); } // for local names
    ~EndToEnd() override { hubline::StopHubline(); }

    void makeTree()
    {
        for (const char* name : {"影像/一.tif", "影像/sub/deep.txt", "readme.txt"})
            m_Data.makeFile(std::string("tree/") + name, "content");
        std::filesystem::create_directories(below("tree/empty"));
        m_Store.addBox("box-1", "127.0.0.1:1");
        import("tree", "盘", "LUMO", "box-1");
    }

    void serve(centre::ServeOptions options, const Certificate* certificate = nullptr)
    {
        hubline::Options hub;
        if (certificate != nullptr) {
            options.tlsCertificate = certificate->certificate();
            options.tlsKey = certificate->key();
            hub.security = hubline::Security::Tls;
            hub.rootCertificate = certificate->certificate();
        }
        CentreTest::serve(options);
        hub.address = m_Centre->address();
        hub.token = m_Data.token();
        std::string reason;
        ASSERT_EQ(hubline::StartHubline(hub, reason), hubline::kOpened) << reason;
        m_Channel = hubline::GetCurrentChannelExt();
        ASSERT_EQ(
            m_Manager.initDataMgr(m_Channel.get(), m_Channel.get(), hub.token.c_str(), "demo", "LUMO", 30000),
            INIT_SUCCESS);
    }

    std::string below(const std::string& name) const { return m_Data.below(name); }

    /// Runs the program that ends while work is under way; it must end cleanly.
    void endingProgram(const QStringList& arguments)
    {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(ENDING_PROGRAM, QStringList{QString::fromStdString(m_Centre->address()),
                                                  QString::fromStdString(m_Data.token()), "demo", "LUMO"} +
                                          arguments);
        ASSERT_TRUE(program.waitForFinished(60000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 0) << program.readAll().toStdString();
    }

    LogCapture m_Log; ///< keeps the lines out of the output
    struct Instance
    {
        ~Instance() { TestManager::m_Instance = nullptr; }
    } m_Instance; ///< what transfers ask for, until the manager has waited for them
    TestManager m_Manager;
};

const centre::ServeOptions kWithBox = [] {
    centre::ServeOptions options;
    options.boxes = {{"box-1", "127.0.0.1:0"}};
    return options;
}();

} // namespace

TEST_F(EndToEnd, AFolderOfManyPagesArrivesWholeOverTls)
{
    const Certificate certificate;
    ASSERT_TRUE(certificate.made());
    const unsigned int top = m_Store.addDisk("large", "/large", "LUMO");
    m_Store.addMadeUpFiles(top, 25000);
    serve({}, &certificate);
    QList<tagFileTable> files;
    ASSERT_EQ(m_Manager.getFileByParentID(top, files), RET_SUCCESS);
    ASSERT_EQ(files.size(), 25000);
    for (int i = 0; i < files.size(); ++i)
        ASSERT_EQ(files[i].fileName, QString::asprintf("file-%06d.dat", i).toStdString());
}

TEST_F(EndToEnd, AProcessThatEndsWhileCallsRunEndsCleanly)
{
    makeTree();
    centre::ServeOptions options;
    options.faults = {"querySrcTableBySrcId=stall"};
    serve(options);
    endingProgram({});
}

TEST_F(EndToEnd, AProcessThatEndsWhileTransfersRunWaitsForThem)
{
    makeTree();
    serve(kWithBox);
    for (const std::string each : {"0", "1", "2", "3"}) {
        writeFile(below("local/" + each + "/large"), std::string(5000000, 'x'));
        std::filesystem::create_directories(below("local/" + each + "/down"));
    }
    endingProgram({QString::fromStdString(below("local"))});
    for (const std::string each : {"0", "1", "2", "3"}) {
        EXPECT_EQ(readFile(below("local/" + each + "/down/盘/影像/sub/deep.txt")), "content");
        EXPECT_EQ(std::filesystem::file_size(below("tree/" + each + "/large")), 5000000u);
    }
}

/// With names in the code page, as an application has them that sets nothing.
TEST_F(EndToEnd, WhatWasImportedAndUploadedComesBackTheSame)
{
    makeTree();
    serve(kWithBox);
    TestManager::m_Instance = &m_Manager; // the tasks ask for it
    writeFile(below("local/新的/大.bin"), std::string(3000000, 'y'));
    std::filesystem::create_directories(below("local/新的/empty"));
    std::filesystem::create_directories(below("back"));
    Awaited<int> last(-1);
    const auto report = [&](const char*, int, int code, int percent) {
        if (code != 0 || percent == 100)
            last.exchange(code);
    };
    const auto end = [&] {
        last.wait([](int code) { return code != -1; });
        return last.exchange(-1);
    };
    const auto local = [&](const std::string& name) { return QString::fromStdString(below(name)); };
    ASSERT_TRUE(m_Manager.upload(local("local/新的"), {0, 1}, 0xFFFFFFFF, false, report));
    EXPECT_EQ(end(), 0);
    EXPECT_EQ(treeOf(below("tree/新的")), treeOf(below("local/新的")));
    tagDiskTable disk;
    ASSERT_EQ(m_Manager.getDisk(QString::fromUtf8("盘"), disk), RET_SUCCESS);
    EXPECT_STREQ(disk.diskName, "\xc5\xcc");
    ASSERT_TRUE(m_Manager.download(local("back"), {0, disk.diskID}, false, report));
    EXPECT_EQ(end(), 0);
    EXPECT_EQ(treeOf(below("back/盘")), treeOf(below("tree")));
}
