#include "tests/transfer/TransferFixture.h"

namespace {

typedef std::vector<std::string> Lines;

const char kBox[] = "info { address: 'box:1' }";
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
    QByteArray download(const char* source)
    {
        answer({std::string("bean { app_full_path: '") + source + "' }"});
        EXPECT_TRUE(manager().downloadBySoftID("./", "box:1", "s", "1", true, callback()));
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
    write("box/f", "file");
    write("box/g/h/i", "deep");
    write("here/convert.cfg", settings("/srv", "box"));
    write("here/f", "old");
    EXPECT_EQ(download("/srv/f"), "file");
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 0 100"}));
    again();
    download("C:\\\\x"); // the pattern does not match
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 8 0"}));
    EXPECT_EQ(taskLines("LumoDownloadRunnable"), Lines{"Copy File Failed : C:/x!" + std::string(kRun)});
    EXPECT_EQ(components().calls, (Lines{"open box:1 t0ken", "release box:1"}));
    again();
    download("/srv/g");
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 0 100"}));
    EXPECT_EQ(read("here/g/h/i"), "deep");
    EXPECT_EQ(components().calls, (Lines{"open box:1 t0ken", "release box:1"}));
    again();
    QDir(path("here/g/h")).removeRecursively();
    write("here/g/h", "a file where the folder is to be");
    download("/srv/g");
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 6 0"}));
    EXPECT_EQ(taskLines("LumoDownloadRunnable"),
              Lines{"Copy File Failed : ./g/h/i! Func:CLumoDownloadRunnable::copyFile"});
    again();
    components().opened.reset();
    download("/srv/f");
    EXPECT_EQ(m_Events, (Lines{"0 0 0", "0 101 0"}));
}

TEST_F(PathConversion, AFileOfTheCatalogueIsCopiedAndKeptOrReplacedAsAsked)
{
    write("box/f", "new");
    write("here/convert.cfg", settings("/srv", "box"));
    QDir(path("here")).mkdir("d");
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
        EXPECT_EQ(read("box/f"), "new");
        again();
    }
}
