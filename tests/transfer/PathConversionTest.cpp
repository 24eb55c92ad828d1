#include "tests/transfer/TransferFixture.h"

namespace {

typedef std::vector<std::string> Lines;

const char kRun[] = " Func:CLumoDownloadRunnable::run";

class PathConversion : public TransferFixture
{
protected:
    QByteArray settings(const QByteArray& from, const QString& to) const
    {
        return "[ConvertParam]\nfrom=" + from + "\nto=" + path(to).toUtf8() + "\n";
    }

    /// Downloads a path of a box; "client" when the bulk transfer client was to move it, else what is in
    /// the file of that name here.
    QByteArray download(const char* source, bool overwrite = true)
    {
        answer({std::string("bean { app_full_path: '") + source + "' }"});
        EXPECT_TRUE(manager().downloadBySoftID("./", "box:1", "s", "1", overwrite, callback()));
        end();
        return components().calls.size() > 2 ? "client" : read("here/f");
    }
};

} // namespace

TEST_F(PathConversion, FollowsTheFileOfTheWorkingFolderElseOfTheOneAbove)
{
    write("a/f", "by here");
    write("b/f", "by above");
    const struct
    {
        QByteArray here, above; ///< the files' contents, no file when empty
        const char* source;
        QByteArray result;
    } cases[] = {
        {"", "", "/srv/f", "client"},
        {settings("/srv", "a"), settings("/srv", "b"), "/srv/f", "by here"},
        {"", settings("/srv", "b"), "/srv/f", "by above"},
        {"[ConvertParam]\nfrom=/srv\n", settings("/srv", "b"), "/srv/f", "client"},
        {"[ConvertParam]\nto=/srv\n", "", "/srv/f", "client"},
        {settings("/s.v", "a"), "", "/sxv/f", "by here"},
        {settings("/srv", "a"), "", "/SRV/f", "none"},
        {settings("srv", "a"), "", "/srv/f", "none"},
        {settings("/(", "a"), "", "/srv/f", "none"},
        {settings("/s(.)v", "\\\\1"), "", "/sav/f", "by here"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE((c.here + c.above + c.source).toStdString());
        for (const auto& file :
             {qMakePair(QString("here/convert.cfg"), c.here), qMakePair(QString("convert.cfg"), c.above)})
            if (file.second.isEmpty())
                QFile::remove(path(file.first));
            else
                write(file.first, file.second);
        EXPECT_EQ(download(c.source), c.result);
        QFile::remove(path("here/f"));
        again();
    }
}

TEST_F(PathConversion, APathIsCopiedAndTellsItsEndOrOneFailure)
{
    write("here/convert.cfg", settings("/srv", "box"));
    for (const char* name :
         {"f", ":f", "linked", "g/h/i", "g/:h/:i", "dir", "dangling", "file/i", "out/i", "a/i", "b/i"})
        write("box/" + QString(name), "new");
    for (const char* name : {"old", "file", "dir/i"})
        write("here/" + QString(name), "old");
    write("box/old", "new");
    const struct
    {
        const char* target;
        const char* link;
    } links[] = {{"../box/linked", "here/linked"},
                 {"../nowhere", "here/dangling"},
                 {"..", "here/out"},
                 {"..", "box/above"},
                 {".", "box/b/self"},
                 {"../b", "box/a/b"},
                 {"../a", "box/b/a"}};
    for (const auto& link : links)
        ASSERT_TRUE(QFile::link(link.target, path(link.link)));
    const char copyFile[] = " Func:CLumoDownloadRunnable::copyFile";
    const char copyDirectory[] = " Func:CLumoDownloadRunnable::copyDirectory";
    const struct
    {
        const char* source;
        bool overwrite;
        const char* event; ///< behind the start
        std::string line;  ///< of a failure
        const char* file;  ///< here
        const char* content;
    } cases[] = {
        {"/srv/f", true, "0 0 100", "", "f", "new"},
        {"/srv/:f", true, "0 0 100", "", ":f", "new"},
        {"/srv/old", false, "0 0 100", "", "old", "old"},
        {"/srv/old", true, "0 0 100", "", "old", "new"},
        {"/srv/linked", true, "0 0 100", "", "linked", "new"},
        {"/srv/dangling", true, "0 8 0", "Copy File Failed : ./dangling!" + std::string(copyFile),
         "../nowhere", "none"},
        {"/srv/dangling", false, "0 8 0", "Copy File Failed : ./dangling!" + std::string(copyFile),
         "../nowhere", "none"},
        {"/srv/dir", true, "0 8 0", "Remove File Failed : ./dir!" + std::string(copyFile), "dir/i", "old"},
        {"C:\\\\x", true, "0 8 0", "Copy File Failed : C:/x!" + std::string(kRun), "x", "none"},
        {"/srv/g", true, "0 0 100", "", "g/h/i", "new"},
        {"/srv/g", true, "0 0 100", "", "g/:h/:i", "new"},
        {"/srv/file", true, "0 6 0", "Copy File Failed : ./file/i!" + std::string(copyFile), "file", "old"},
        {"/srv/out", true, "0 6 0", "mkdir Failed : ./out!" + std::string(copyDirectory), "../i", "none"},
        {"/srv/..", true, "0 6 0", "mkdir Failed : ./..!" + std::string(copyDirectory), "../i", "none"},
        {"/srv/above", true, "0 6 0", "mkdir Failed : ./above!" + std::string(copyDirectory), "above",
         "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source);
        download(c.source, c.overwrite);
        EXPECT_EQ(m_Events, (Lines{"0 0 0", c.event}));
        EXPECT_EQ(taskLines("LumoDownloadRunnable"), c.line.empty() ? Lines() : Lines{c.line});
        EXPECT_EQ(components().calls, (Lines{"open box:1 t0ken", "release box:1"}));
        EXPECT_EQ(read("here/" + QString(c.file)), c.content);
        again();
    }
    EXPECT_FALSE(QFileInfo(path("here/linked")).isSymLink()) << "the link is replaced, not its target";
    for (const char* source : {"/srv/a", "/srv/b"}) { // links that lead in circles
        download(source);
        EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 6 0"}));
        ASSERT_EQ(taskLines("LumoDownloadRunnable").size(), 1u);
        EXPECT_TRUE(std::regex_match(taskLines("LumoDownloadRunnable")[0],
                                     std::regex("mkdir Failed : (./a/b/a|./a/b/self|./b/a/b|./b/self)! .*")))
            << taskLines("LumoDownloadRunnable")[0];
        again();
    }
    components().opened.reset();
    download("/srv/f");
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 101 0"}));
}

TEST_F(PathConversion, AFileOfTheCatalogueIsCopiedAndKeptOrReplacedAsAsked)
{
    write("box/f", "new");
    write("here/convert.cfg", settings("/srv", "box"));
    QDir(path("here")).mkdir("d");
    QFile::link("f", path("box/link"));
    const char copyFile[] = "Func:CLumoDownloadRunnable::copyFile";
    const struct
    {
        const char* source;
        const char* localDir;
        bool overwrite;
        const char* old; ///< content of the target, null for none
        const char* event;
        std::string line;
        QByteArray target;
    } cases[] = {
        {"/srv/f", ".", true, nullptr, "0 0 100", "", "new"},
        {"/srv/f", ".", false, "old", "0 0 100", "", "old"},
        {"/srv/f", ".", true, "old", "0 0 100", "", "new"},
        {"/srv/f", "../box", true, nullptr, "0 0 100", "", "none"}, // onto itself
        {"/srv/link", "../box", true, nullptr, "0 0 100", "", "none"},
        {"/srv/gone", ".", true, nullptr, "0 8 0", "Copy File Failed : ./gone! ", "none"},
        {"/srv/d", ".", true, nullptr, "0 8 0", "Remove File Failed : ./d! ", "none"},
        {"/srv/..", ".", false, nullptr, "0 8 0", "Copy File Failed : ./..! ", "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source);
        QFile::remove(path("here/f"));
        if (c.old)
            write("here/f", c.old);
        const std::string fullPath = std::string("full_path: '") + c.source + "'";
        answer({"bean {}", fullPath, kBox, fullPath});
        EXPECT_TRUE(manager().download(c.localDir, qMakePair(2, 7u), c.overwrite, callback()));
        end();
        EXPECT_EQ(m_Events, (Lines{"0 0 0", c.event}));
        EXPECT_EQ(taskLines("LumoDownloadRunnable"),
                  c.line.empty() ? Lines()
                                 : (Lines{c.line + copyFile, "download Failed!" + std::string(kRun)}));
        EXPECT_EQ(components().calls, (Lines{"open box:1 t0ken", "release box:1"}));
        EXPECT_EQ(read("here/f"), c.target);
        EXPECT_EQ(read("box/link"), "new"); // by way of the file
        again();
    }
}
