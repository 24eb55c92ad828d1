#include "components/bulkhaul/files/IncomingSmallFiles.h"
#include "tests/components/bulkhaul/TestBox.h"
#include "tests/support/CuttingProxy.h"

#include <atomic>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

using namespace bulkhaul;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long kMostGrowth = 1L << 30; // sanitizers keep what was freed for a while
#else
constexpr long kMostGrowth = 64L << 20;
#endif
const Way kBothWays[] = {Way::Down, Way::Up};

} // namespace

TEST_F(TransferTest, FoldersAndFilesOfEverySizeArriveAsTheyAreBothWays)
{
    TestBox testBox(*catalogue);
    for (const Way way : kBothWays) {
        const std::string name = way == Way::Down ? "down" : "up";
        const fs::path root = source(way) / name;
        unsigned seed = 0;
        std::size_t bytes = 15000; // of the files of 100 bytes
        for (const std::size_t size :
             {std::size_t(0), std::size_t(1), std::size_t(4096), kMiB - 1, kMiB, kMiB + 1, 3 * kMiB + 5})
            writeFile(root / "尺寸" / std::to_string(size), content(size, ++seed)), bytes += size;
        for (int i = 0; i < 150; ++i) // more than one batch
            writeFile(root / ("d" + std::to_string(i % 7)) / std::to_string(i), content(100, ++seed));
        fs::create_directories(root / "空文件夹" / "empty");

        std::vector<std::pair<int, int>> reported;
        ASSERT_EQ(move(way, testBox, name, false,
                       [&](const std::string& id, int code, int percent) {
                           EXPECT_EQ(id.size(), 36u);
                           reported.emplace_back(code, percent);
                           EXPECT_EQ(end.transferID, percent == 100 ? id : "");
                           if (percent == 100) {
                               EXPECT_EQ(endThread, std::this_thread::get_id());
                               EXPECT_EQ(treeOf(target(way) / name), treeOf(root));
                           }
                       }),
                  kDone);
        EXPECT_EQ(end.bytesMoved, bytes);
        EXPECT_EQ(end.filesKept, 0u);
        EXPECT_EQ(treeOf(target(way) / name), treeOf(root));
        EXPECT_EQ(reported.front(), std::make_pair(0, 0));
        EXPECT_EQ(reported.back(), std::make_pair(0, 100));
        EXPECT_TRUE(std::is_sorted(reported.begin(), reported.end()));
    }
    EXPECT_EQ(catalogue->lastMessage(), std::string("google.protobuf.StringValue:\n\x03"
                                                    "ada"));
    std::map<std::string, bool> recorded = catalogue->recorded();
    for (const auto& [below, bytes] : treeOf(box() / "up")) {
        const bool folder = below.back() == '/';
        const std::string path = (box() / "up" / below.substr(0, below.size() - folder)).string();
        ASSERT_EQ(recorded.count(path), 1u) << path;
        EXPECT_EQ(recorded[path], folder) << path;
    }
}

TEST_F(TransferTest, AnExistingTargetIsReplacedOrKept)
{
    TestBox testBox(*catalogue);
    for (const Way way : kBothWays)
        for (const std::size_t size : {std::size_t(10), 2 * kMiB}) {
            for (const std::string file : {"file", "tree/file"}) {
                writeFile(source(way) / file, content(size, 1));
                writeFile(target(way) / file, content(size, 2));
            }
            const std::string fresh = summary(content(size, 1));
            const std::string old = summary(content(size, 2));
            for (const std::string name : {"file", "tree"}) {
                EXPECT_EQ(move(way, testBox, name, true), kDone);
                EXPECT_EQ(end.filesKept, 1u);
                EXPECT_LE(end.bytesMoved,
                          way == Way::Down ? 0u : 10u); // a box may be asked with a small file
                EXPECT_EQ(summaryOf(target(way) / (name == "file" ? name : "tree/file")), old);
                EXPECT_EQ(move(way, testBox, name, false), kDone);
                EXPECT_EQ(end.filesKept, 0u);
                EXPECT_EQ(end.bytesMoved, size);
                EXPECT_EQ(summaryOf(target(way) / (name == "file" ? name : "tree/file")), fresh);
            }
            writeFile(target(way) / "file", content(1, 3)); // of another size
            EXPECT_EQ(move(way, testBox, "file"), kDone);
            EXPECT_EQ(summaryOf(target(way) / "file"), fresh);
            for (const std::string name : {"file", "tree"}) {
                const fs::path link = target(way) / (name == "file" ? name : "tree/file");
                fs::remove(link);
                fs::create_symlink("elsewhere", link);
                EXPECT_EQ(move(way, testBox, name, true), kDone);
                EXPECT_TRUE(fs::is_symlink(link));
                EXPECT_EQ(move(way, testBox, name, false), kDone);
                EXPECT_EQ(summaryOf(link), fresh);
            }
        }
}

TEST_F(TransferTest, ATargetThatComesWhileTheTransferRunsIsKeptIfAsked)
{
    TestBox testBox(*catalogue);
    for (const std::size_t size : {std::size_t(10), 2 * kMiB}) {
        writeFile(box() / "file", content(size, 1));
        for (const bool keep : {true, false}) {
            fs::remove(here() / "file");
            catalogue->onAdmit([&](int) { writeFile(here() / "file", "new"); });
            EXPECT_EQ(move(Way::Down, testBox, "file", keep), kDone);
            EXPECT_EQ(summaryOf(here() / "file"), summary(keep ? "new" : content(size, 1)));
            EXPECT_FALSE(fs::exists(here() / ".file.lumo-part"));
        }
    }
}

TEST_F(TransferTest, EachFaultFailsWithItsCodeLeavesTheOldTargetAndIsMendedByTheNextAttempt)
{
    struct Row
    {
        Way way;
        std::string name;
        std::string fault;
        int code;
    };
    const Row rows[] = {
        {Way::Down, "small", "open=refuse", kBoxFailed},
        {Way::Down, "small", "open=corrupt", kCorrupted},
        {Way::Down, "small", "open=stall", kStalled},
        {Way::Down, "large", "read@3=refuse", kBoxFailed},
        {Way::Down, "large", "read@4=corrupt", kCorrupted},
        {Way::Down, "large", "read=break:2500000", kBoxFailed},
        {Way::Down, "large", "read@3=stall", kStalled},
        {Way::Down, "large", "digests=refuse", kBoxFailed},
        {Way::Down, "tree", "list=refuse", kBoxFailed},
        {Way::Down, "tree", "fetch@2=refuse", kBoxFailed},
        {Way::Down, "tree", "fetch@2=corrupt", kCorrupted},
        {Way::Down, "tree", "fetch=break:5000", kBoxFailed},
        {Way::Up, "small", "store=refuse", kBoxFailed},
        {Way::Up, "small", "store=corrupt", kCorrupted},
        {Way::Up, "large", "begin=refuse", kBoxFailed},
        {Way::Up, "large", "write@3=corrupt", kCorrupted},
        {Way::Up, "large", "write=break:2500000", kBoxFailed},
        {Way::Up, "large", "write@2=stall", kStalled},
        {Way::Up, "large", "finish=refuse", kBoxFailed},
        {Way::Up, "tree", "store@3=corrupt", kCorrupted},
        {Way::Up, "tree", "store=break:5000", kBoxFailed},
        {Way::Up, "tree", "write@2=refuse", kBoxFailed},
    };
    for (const Way way : kBothWays) {
        writeFile(source(way) / "small", content(5000, 1));
        writeFile(source(way) / "large", content(5 * kMiB + 7, 2));
        for (int i = 0; i < 200; ++i)
            writeFile(source(way) / "tree" / std::to_string(i), content(100, 3));
        writeFile(source(way) / "tree/zz/large", content(3 * kMiB, 4));
    }
    for (const Row& row : rows) {
        SCOPED_TRACE((row.way == Way::Down ? "down " : "up ") + row.name + " " + row.fault);
        fs::remove_all(target(row.way) / row.name);
        if (row.name != "tree")
            writeFile(target(row.way) / row.name, "the old target");
        int last = -1;
        int percent = -1;
        {
            TestBox faulty(*catalogue, {row.fault});
            setStallLimit(row.code == kStalled ? 300 : 60000);
            EXPECT_EQ(move(row.way, faulty, row.name, false,
                           [&](const std::string&, int code, int reported) {
                               last = code;
                               percent = reported;
                           }),
                      row.code);
            setStallLimit(60000);
        }
        EXPECT_EQ(last, row.code);
        EXPECT_LT(percent, 100);
        if (row.name != "tree")
            EXPECT_EQ(summaryOf(target(row.way) / row.name), "the old target");
        TestBox sound(*catalogue);
        EXPECT_EQ(move(row.way, sound, row.name), kDone);
        if (row.name == "tree")
            EXPECT_EQ(treeOf(target(row.way) / "tree"), treeOf(source(row.way) / "tree"));
        else
            EXPECT_EQ(summaryOf(target(row.way) / row.name), summaryOf(source(row.way) / row.name));
    }
}

TEST_F(TransferTest, ACutConnectionCostsOnlyWhatHadNotMoved)
{
    TestBox testBox(*catalogue);
    for (const Way way : kBothWays) {
        // A box that takes long to answer counts as far away: a file is moved in several streams at once.
        catalogue->onAdmit([](int) { std::this_thread::sleep_for(std::chrono::milliseconds(15)); });
        writeFile(source(way) / "far", content(100 * kMiB + 7, 2));
        EXPECT_EQ(move(way, testBox, "far"), kDone);
        EXPECT_EQ(end.bytesMoved, 100 * kMiB + 7);
        EXPECT_EQ(treeOf(target(way)), treeOf(source(way)));
        catalogue->onAdmit(nullptr);
        fs::remove(source(way) / "far");
        fs::remove(target(way) / "far");
        // So do the missing chunks of a file of which many here and there are missing: one that stalls holds
        // up no other.
        std::string holes = content(16 * kMiB, 3);
        writeFile(source(way) / "holes", holes);
        for (std::size_t chunk = 0; chunk < 16; chunk += 2)
            holes[chunk * kMiB] ^= 1;
        writeFile(target(way) / ".holes.lumo-part", holes);
        TestBox stalling(*catalogue, {way == Way::Down ? "read@1=stall" : "write@1=stall"});
        setStallLimit(500);
        EXPECT_EQ(move(way, stalling, "holes"), kStalled);
        setStallLimit(60000);
        EXPECT_GE(end.bytesMoved, kMiB);
        EXPECT_EQ(move(way, stalling, "holes"), kDone);
        EXPECT_EQ(treeOf(target(way)), treeOf(source(way)));
        fs::remove(source(way) / "holes");
        fs::remove(target(way) / "holes");
        writeFile(source(way) / "large", content(24 * kMiB, 1));
        for (int i = 0; i < 600; ++i)
            writeFile(source(way) / "tree" / std::to_string(i), content(20000, static_cast<unsigned>(i)));
        for (const std::string name : {"large", "tree"}) {
            const std::uint64_t whole = name == "large" ? 24 * kMiB : std::uint64_t(600) * 20000;
            {
                CuttingProxy cable(testBox.port(), whole / 2);
                EXPECT_EQ(move(way, testBox.channel(cable.port()), name), kNoConnection);
            }
            CuttingProxy cable(testBox.port());
            EXPECT_EQ(move(way, testBox.channel(cable.port()), name), kDone);
            EXPECT_LT(cable.moved(), whole * 9 / 10) << name; // what was on its way is lost
            CuttingProxy idle(testBox.port());                // all is there: digests alone travel
            EXPECT_EQ(move(way, testBox.channel(idle.port()), name), kDone);
            EXPECT_LT(idle.moved(), whole / 10) << name;
        }
        EXPECT_EQ(treeOf(target(way)), treeOf(source(way)));
        fs::remove_all(source(way));
        fs::remove_all(target(way));
        fs::create_directories(box());
        fs::create_directories(here());
    }
}

TEST_F(TransferTest, ASourceThatChangesWhileItIsReadIsAFailureThatSaysSo)
{
    TestBox testBox(*catalogue);
    for (const std::string call : {"read", "digests"}) {
        writeFile(box() / "down", content(8 * kMiB, 1));
        testBox.onCall([this, call](const std::string& method) {
            if (method == "haulbox.BoxServices." + call)
                std::ofstream(box() / "down", std::ios::app) << "more";
        });
        EXPECT_EQ(move(Way::Down, testBox, "down"), kSourceChanged) << call;
        EXPECT_FALSE(fs::exists(here() / "down"));
    }
    testBox.onCall(nullptr);

    writeFile(here() / "up", content(8 * kMiB, 1));
    catalogue->onAdmit([this](int) { fs::resize_file(here() / "up", 3 * kMiB); });
    EXPECT_EQ(move(Way::Up, testBox, "up"), kSourceChanged);
    EXPECT_FALSE(fs::exists(box() / "up"));
    catalogue->onAdmit(nullptr);
    EXPECT_EQ(move(Way::Down, testBox, "down"), kDone);
    EXPECT_EQ(move(Way::Up, testBox, "up"), kDone);
    EXPECT_EQ(treeOf(box()), treeOf(here()));
}

TEST_F(TransferTest, AFullDiskIsAFailureThatSaysSoAndWhatArrivedIsKept)
{
    ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
    TestBox testBox(*catalogue);
    for (const Way way : kBothWays) {
        writeFile(source(way) / "large", content(8 * kMiB, 1));
        rlimit before;
        ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit full = {4 * kMiB, before.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
        EXPECT_EQ(move(way, testBox, "large"), kNoSpace);
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_FALSE(fs::exists(target(way) / "large"));
        EXPECT_TRUE(fs::exists(target(way) / ".large.lumo-part"));
        CuttingProxy cable(testBox.port());
        EXPECT_EQ(move(way, testBox.channel(cable.port()), "large"), kDone);
        EXPECT_LT(cable.moved(), 7 * kMiB);
        EXPECT_EQ(treeOf(target(way)), treeOf(source(way)));
        fs::remove(box() / "large");
        fs::remove(here() / "large");
    }
}

TEST_F(TransferTest, SourcesAndTargetsThatCanNotBeUsedHaveCodesOfTheirOwn)
{
    TestBox testBox(*catalogue);
    writeFile(box() / "file", "f");
    writeFile(here() / "file2", "f");
    fs::create_directories(here() / "folder");
    fs::create_directories(box() / "folder2");
    fs::create_symlink("/etc/hostname", box() / "link");
    ::mkfifo((here() / "pipe").c_str(), 0600);
    fs::create_directories(here() / "strange");
    ::mkfifo((here() / "strange/pipe").c_str(), 0600);
    fs::path deep = here() / "deep";
    for (int i = 0; i < 300; ++i)
        deep /= "d";
    fs::create_directories(deep);
    const std::string outside = (box().parent_path() / "outside").string();
    const auto download = [&](const std::string& from, const fs::path& to) {
        return Download(testBox.channel(), from, to.string(), false, {}, nullptr, nullptr);
    };
    const auto upload = [&](const fs::path& from, const std::string& to) {
        return Upload(testBox.channel(), to, from.string(), false, {}, nullptr, nullptr);
    };
    const std::string root = box().string() + "/";
    const struct
    {
        Way way;
        std::string from;
        std::string to;
        int code;
    } cases[] = {
        {Way::Down, root + "none", "x", kNotFound},
        {Way::Down, outside, "x", kRefused},
        {Way::Down, root + "../outside", "x", kUnsafeName},
        {Way::Down, root + "link", "x", kWrongKind},
        {Way::Down, root + "file", "folder", kWrongKind},
        {Way::Down, root + "folder2", "file2", kWrongKind},
        {Way::Down, root + "file", "none/x", kNotWritable},
        {Way::Down, root + "file", "..", kUnsafeName},
        {Way::Up, "none", root + "x", kNotFound},
        {Way::Up, "pipe", root + "x", kWrongKind},
        {Way::Up, "strange", root + "x", kWrongKind},
        {Way::Up, "deep", root + "x", kUnsafeName},
        {Way::Up, "file2", outside, kRefused},
        {Way::Up, "file2", root + "folder2", kWrongKind},
        {Way::Up, "file2", root + "../x", kUnsafeName},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.way == Way::Down ? download(c.from, here() / c.to) : upload(here() / c.from, c.to),
                  c.code)
            << c.from << " to " << c.to;
    const auto downloadKeeping = [&](const std::string& from) {
        return Download(testBox.channel(), from, (here() / "file2").string(), true, {}, nullptr, nullptr);
    };
    EXPECT_EQ(downloadKeeping(root + "folder2"), kWrongKind);
    EXPECT_EQ(endThread, std::this_thread::get_id());
    EXPECT_EQ(Download(testBox.channel(testBox.port(), "wrong"), root + "file", (here() / "x").string(),
                       false, {}, nullptr, nullptr),
              kRefused);
    EXPECT_FALSE(fs::exists(here() / "x"));
    EXPECT_FALSE(fs::exists(box() / "x"));
    std::vector<std::string> lines;
    StartBulkhaul(5, 5, [&](int, const std::string& line) { lines.push_back(line); });
    EXPECT_EQ(downloadKeeping(root + "file"), kDone);
    const std::string kept = "download " + end.transferID + " of " + root + "file is done, 1 kept";
    testBox.stop();
    EXPECT_EQ(download(root + "file", here() / "x"), kNoConnection);
    EXPECT_EQ(downloadKeeping(root + "file"), kNoConnection);
    const SourcesAreFiles option; // so that the box need not say that it is one
    EXPECT_EQ(downloadKeeping(root + "file"), kDone);
    EXPECT_EQ(end.filesKept, 1u);
    EndBulkhaul();
    ASSERT_EQ(lines.size(), 5u); // of the start, the three transfers without the option, the end
    EXPECT_EQ(lines[1], kept);
}

TEST_F(TransferTest, TransfersToOneTargetNeverMix)
{
    TestBox testBox(*catalogue);
    for (const Way way : kBothWays) {
        const std::string both[] = {content(6 * kMiB, 1), content(6 * kMiB, 2)};
        const fs::path aside = source(way) / "aside";
        writeFile(aside / "0", both[0]);
        writeFile(aside / "1", both[1]);
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([&, i] {
                const std::string from = (aside / std::to_string(i)).string();
                const std::string to = (target(way) / "one").string();
                const auto channel = testBox.channel();
                const int code = way == Way::Down ? Download(channel, from, to, false, {}, nullptr, nullptr)
                                                  : Upload(channel, to, from, false, {}, nullptr, nullptr);
                EXPECT_EQ(code, kDone); // one waits for the other
            });
        for (std::thread& thread : threads)
            thread.join();
        const std::string result = summaryOf(target(way) / "one");
        EXPECT_TRUE(result == summary(both[0]) || result == summary(both[1]));
    }
}

TEST_F(TransferTest, OfTwoTreesWithCrossedNamesOneArrives)
{
    TestBox testBox(*catalogue);
    for (const std::string tree : {"0", "1"}) {
        for (int i = 0; i < 200; ++i)
            writeFile(here() / tree / "m" / (tree + std::to_string(i)), "x");
        for (const std::string name : {"a", "z"}) // a file in one, a folder in the other
            writeFile(here() / tree / ((name == "a") == (tree == "0") ? name : name + "/file"), tree);
        writeFile(here() / tree / "y" / tree, content(2 * kMiB, 1));
    }
    for (int round = 0; round < 10; ++round) {
        int codes[2];
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([&, i] {
                codes[i] =
                    Upload(testBox.channel(), (box() / "one").string(), (here() / std::to_string(i)).string(),
                           round % 2 == 0, {}, nullptr, nullptr);
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(codes[0] + codes[1], kDone + kWrongKind);
        fs::remove_all(box() / "one");
    }
}

TEST_F(TransferTest, SmallFilesOfTheSameNamesFromTwoTransfersAllArriveInAnyOrder)
{
    const Folder root = Folder::open(here().string());
    const std::string contents[] = {"first", "second, longer"};
    const std::string names[] = {"folder/a", "folder/b"};
    for (const Existing existing : {Existing::Keep, Existing::Replace}) {
        std::atomic<std::size_t> kept{0};
        std::atomic<int> open{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([&, i] { // each has one open, and wants the other's
                IncomingSmallFiles files(root, IncomingSmallFiles::Names::Given, existing);
                files.add(names[i], contents[i]);
                for (++open; open < 2;)
                    std::this_thread::yield();
                files.add(names[1 - i], contents[i]);
                kept += files.finish();
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(kept, existing == Existing::Keep ? 2u : 0u);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(summaryOf(here() / names[i]), contents[existing == Existing::Keep ? i : 1 - i]);
        fs::remove_all(here() / "folder");
    }
}

TEST_F(TransferTest, ThousandsOfMixedTransfersEndWithBoundedMemory)
{
    TestBox testBox(*catalogue);
    writeFile(box() / "small", content(3000, 1));
    writeFile(box() / "large", content(2 * kMiB + 1, 2));
    for (int i = 0; i < 5; ++i)
        writeFile(box() / "tree" / std::to_string(i), content(50, 3));
    const auto resident = [] {
        std::ifstream status("/proc/self/statm");
        long pages = 0;
        status >> pages >> pages;
        return pages * ::sysconf(_SC_PAGESIZE);
    };
    const auto rounds = [&](int count) {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&, thread] {
                const auto channel = testBox.channel();
                const char* const names[] = {"small", "tree", "small", "large"};
                for (int i = 0; i < count; ++i) {
                    const std::string name = names[i % 4];
                    const std::string here = (this->here() / (name + std::to_string(thread))).string();
                    const std::string back = (box() / (name + std::to_string(thread))).string();
                    ASSERT_EQ(Download(channel, (box() / name).string(), here, false, {}, nullptr, nullptr),
                              kDone);
                    ASSERT_EQ(Upload(channel, back, here, false, {}, nullptr, nullptr), kDone);
                    if (i % 4 == 3) {
                        ASSERT_EQ(summaryOf(back), summaryOf(box() / name));
                        fs::remove(back);
                        fs::remove(here);
                    }
                }
            });
        for (std::thread& thread : threads)
            thread.join();
    };
    rounds(60);
    const long warm = resident();
    rounds(200);
    EXPECT_LT(resident() - warm, kMostGrowth);
}
