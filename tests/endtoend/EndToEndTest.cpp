#include "centre/content/Import.h"
#include "centre/server/Centre.h"
#include "centre/store/Store.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/core/TextEncoding.h"
#include "tests/support/Certificate.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTextCodec>

#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <utility>

namespace {

typedef std::vector<std::string> Lines;

/// A centre with the disk "盘" of a small tree, and a manager that is logged in there.
class EndToEnd : public ::testing::Test
{
protected:
    EndToEnd() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); } // for local names
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
        m_HasBox = true;
        centre::importTree(store, options, [](const std::string& problem) { ADD_FAILURE() << problem; });
    }

    void serve(const std::vector<std::string>& faults = {}, const Certificate* certificate = nullptr)
    {
        centre::ServeOptions options;
        options.faults = faults;
        if (m_HasBox)
            options.boxes = {{"box-1", "127.0.0.1:0"}};
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

    std::string below(const std::string& name) const { return m_Folder.path().toStdString() + "/" + name; }

    /// Runs the program that ends while work is under way; it must end cleanly.
    void endingProgram(const QStringList& arguments)
    {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(ENDING_PROGRAM, QStringList{QString::fromStdString(m_Centre->address()),
                                                  QString::fromStdString(m_Token), "demo", "LUMO"} +
                                          arguments);
        ASSERT_TRUE(program.waitForFinished(60000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 0) << program.readAll().toStdString();
    }

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
    bool m_HasBox = false;
    LogCapture m_Log;
    const std::string m_Token = centre::Store::create(below("data"), "LUMO", "demo");
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    struct Instance
    {
        ~Instance() { TestManager::m_Instance = nullptr; }
    } m_Instance; ///< what transfers ask for, until the manager has waited for them
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
    endingProgram({});
}

TEST_F(EndToEnd, AProcessThatEndsWhileTransfersRunWaitsForThem)
{
    makeTree();
    serve();
    for (int i = 0; i < 4; ++i) {
        std::filesystem::create_directories(below("local/" + std::to_string(i) + "/down"));
        std::ofstream(below("local/" + std::to_string(i) + "/large")) << std::string(5000000, 'x');
    }
    endingProgram({QString::fromStdString(below("local"))});
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(
            std::filesystem::exists(below("local/" + std::to_string(i) + "/down/盘/影像/sub/deep.txt")));
        EXPECT_EQ(std::filesystem::file_size(below("tree/" + std::to_string(i) + "/large")), 5000000u);
    }
}

/// With names in the code page, as an application has them that sets nothing.
TEST_F(EndToEnd, WhatWasUploadedIsInTheCatalogueAndComesBackTheSame)
{
    makeTree();
    serve();
    TestManager::m_Instance = &m_Manager; // the tasks ask for it
    std::filesystem::create_directories(below("local/新的/empty"));
    std::filesystem::create_directories(below("back"));
    std::ofstream(below("local/新的/大.bin")) << std::string(3000000, 'y');
    std::mutex mutex;
    std::condition_variable ended;
    int last = -1;
    const auto told = [&](const char*, int, int code, int percent) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (code != 0 || percent == 100)
            last = code;
        ended.notify_one();
    };
    const auto result = [&] {
        std::unique_lock<std::mutex> lock(mutex);
        ended.wait(lock, [&] { return last != -1; });
        return std::exchange(last, -1);
    };
    ASSERT_TRUE(
        m_Manager.upload(QString::fromStdString(below("local/新的")), {0, 1}, 0xFFFFFFFF, false, told));
    EXPECT_EQ(result(), 0);
    const unsigned int top = m_Manager.getFolderID(1, 0, "盘");
    const unsigned int uploaded = m_Manager.getFolderID(1, top, "新的");
    ASSERT_NE(uploaded, 0xFFFFFFFF);
    Lines found;
    walk(uploaded, "", found);
    EXPECT_EQ(found, Lines({"大.bin", "empty/"}));
    ASSERT_TRUE(m_Manager.download(QString::fromStdString(below("back")), {1, uploaded}, false, told));
    EXPECT_EQ(result(), 0);
    EXPECT_TRUE(std::filesystem::is_directory(below("back/新的/empty")));
    EXPECT_EQ(summaryOf(below("back/新的/大.bin")), summary(std::string(3000000, 'y')));
}
