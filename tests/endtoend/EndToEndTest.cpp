#include "centre/Centre.h"
#include "centre/Import.h"
#include "centre/Store.h"
#include "components/hubline/Hubline.h"
#include "core/TextEncoding.h"
#include "tests/support/Certificate.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace {

typedef std::vector<std::string> Lines;

/// A centre with the disk "盘" of a small tree, and a manager that is logged in there.
class EndToEnd : public ::testing::Test
{
protected:
    ~EndToEnd() override { hubline::StopHubline(); }

    void makeTree()
    {
        for (const char* name : {"影像/一.tif", "影像/sub/deep.txt", "empty/", "readme.txt"}) {
            const std::filesystem::path path = below(std::string("tree/") + name);
            std::filesystem::create_directories(path.parent_path());
            if (path.has_filename())
                std::ofstream(path) << "content";
        }
        centre::Store store(below("data"));
        centre::ImportOptions options;
        options.folder = below("tree");
        options.diskName = "盘";
        options.companyNo = "LUMO";
        store.addBox("box-1", "127.0.0.1:1");
        options.boxCode = "box-1";
        centre::importTree(store, options, [](const std::string& problem) { ADD_FAILURE() << problem; });
    }

    void serve(const std::vector<std::string>& faults = {}, const Certificate* certificate = nullptr)
    {
        centre::ServeOptions options;
        options.faults = faults;
        hubline::Options hub;
        if (certificate != nullptr) {
            options.tlsCertificate = certificate->certificate();
            options.tlsKey = certificate->key();
            hub.security = hubline::Security::Tls;
            hub.rootCertificate = certificate->certificate();
        }
        m_Centre = std::make_unique<centre::Centre>(below("data"), options);
        hub.address = m_Centre->address();
        hub.token = m_Token;
        std::string reason;
        ASSERT_EQ(hubline::StartHubline(hub, reason), hubline::kOpened) << reason;
        m_Channel = hubline::GetCurrentChannelExt();
        ASSERT_EQ(
            m_Manager.initDataMgr(m_Channel.get(), m_Channel.get(), m_Token.c_str(), "demo", "LUMO", 30000),
            INIT_SUCCESS);
    }

    std::string below(const std::string& name) const { return m_Folder.filePath("").toStdString() + name; }

    /// Everything below a folder, files first, each as its path.
    void walk(unsigned int folderID, const std::string& path, Lines& found)
    {
        QList<tagFileTable> files;
        EXPECT_EQ(m_Manager.getFileByParentID(folderID, files), RET_SUCCESS);
        for (const tagFileTable& file : files)
            found.push_back(path + convertToUtf8(file.fileName));
        QList<tagFolderTable> folders;
        EXPECT_EQ(m_Manager.getFolderByParentID(folderID, folders), RET_SUCCESS);
        for (const tagFolderTable& folder : folders) {
            found.push_back(path + convertToUtf8(folder.folderName) + "/");
            walk(folder.folderID, found.back(), found);
        }
    }

    QTemporaryDir m_Folder;
    LogCapture m_Log;
    const std::string m_Token = centre::Store::create(below("data"), "LUMO", "demo");
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    TestManager m_Manager;
};

} // namespace

TEST_F(EndToEnd, AWalkOfADiskFindsEveryFolderAndFile)
{
    makeTree();
    serve();
    tagDiskTable disk;
    ASSERT_EQ(m_Manager.getDisk(QString::fromUtf8("盘"), disk), RET_SUCCESS);
    EXPECT_EQ(convertToUtf8(disk.diskName), "盘");
    EXPECT_STREQ(disk.kestaCode, "box-1");
    const unsigned int top = m_Manager.getFolderID(disk.diskID, 0, QString::fromUtf8("盘"));
    ASSERT_NE(top, 0xFFFFFFFF);
    Lines found;
    walk(top, "", found);
    EXPECT_EQ(found,
              (Lines{"readme.txt", "empty/", "影像/", "影像/一.tif", "影像/sub/", "影像/sub/deep.txt"}));
}

TEST_F(EndToEnd, PathsLeadToTheImportedFiles)
{
    makeTree();
    serve();
    tagDiskTable disk;
    ASSERT_EQ(m_Manager.getDisk(1u, disk), RET_SUCCESS);
    const unsigned int top = m_Manager.getFolderID(disk.diskID, 0, QString::fromUtf8("盘"));
    const unsigned int images = m_Manager.getFolderID(disk.diskID, top, QString::fromUtf8("影像"));
    tagFileTable file;
    ASSERT_EQ(m_Manager.getFileByName(images, QString::fromUtf8("一.tif"), file), RET_SUCCESS);
    QString kestaCode;
    const QString path = m_Manager.getFileFullPath(file.fileID, kestaCode);
    EXPECT_TRUE(std::filesystem::equivalent(path.toStdString(), below("tree/影像/一.tif")))
        << path.toStdString();
    EXPECT_EQ(kestaCode, "box-1");
    EXPECT_TRUE(std::filesystem::equivalent(m_Manager.getFolderFullPath(top, kestaCode).toStdString(),
                                            below("tree")));

    EXPECT_EQ(m_Manager.getFile(4000000000u, file), RET_NULL);
    EXPECT_EQ(m_Manager.getFolderFullPath(4000000000u, kestaCode), QString());
}

TEST_F(EndToEnd, AFolderOfManyPagesArrivesWholeOverTls)
{
    const Certificate certificate;
    ASSERT_TRUE(certificate.made());
    unsigned int top = 0;
    {
        centre::Store store(below("data"));
        top = store.addDisk("large", "/large", "LUMO");
        store.addMadeUpFiles(top, 25000);
    }
    serve({}, &certificate);
    QList<tagFileTable> files;
    ASSERT_EQ(m_Manager.getFileByParentID(top, files), RET_SUCCESS);
    ASSERT_EQ(files.size(), 25000);
    for (int i = 0; i < files.size(); ++i) {
        char expected[32];
        std::snprintf(expected, sizeof expected, "file-%06d.dat", i);
        ASSERT_STREQ(files[i].fileName, expected);
    }
}

TEST_F(EndToEnd, APageThatTheCentreRefusesEmptiesTheList)
{
    unsigned int top = 0;
    {
        centre::Store store(below("data"));
        top = store.addDisk("large", "/large", "LUMO");
        store.addMadeUpFiles(top, 20001);
    }
    serve({"queryFileTableBySrcId@3=result:-1"});
    QList<tagFileTable> files;
    EXPECT_EQ(m_Manager.getFileByParentID(top, files), RET_NULL);
    EXPECT_TRUE(files.isEmpty());
}

TEST_F(EndToEnd, AProcessThatEndsWhileCallsRunEndsCleanly)
{
    makeTree();
    serve({"querySrcTableBySrcId=stall"});
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(ENDING_PROGRAM, {QString::fromStdString(m_Centre->address()),
                                   QString::fromStdString(m_Token), "demo", "LUMO"});
    ASSERT_TRUE(program.waitForFinished(60000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0) << program.readAll().toStdString();
}
