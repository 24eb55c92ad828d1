#include "tests/support/Awaited.h"
#include "tests/transfer/TransferFixture.h"

#include <QTextCodec>

#include <cstdlib>

namespace {

class EndOfProcess : public TransferFixture
{
};

} // namespace

TEST_F(EndOfProcess, WaitsForRunningAndQueuedTransfersWhichKeepAllTheyNeed)
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    constexpr int kTransfers = 40; // more than the pool has threads
    write(QString::fromUtf8("box/影"), "content");
    write("here/convert.cfg", "[ConvertParam]\nfrom=/srv\nto=" + path("box").toUtf8());
    EXPECT_EXIT(
        {
            // The tasks go on only after all that was made after the library was loaded is destroyed.
            static Awaited<bool>& gate = *new Awaited<bool>;
            components().onEnd = [] { gate.exchange(true); };
            m_Channel.answer("bean { id: 7 }").answer("bean { id: 8 }");
            CLumoDataMgr& singleton = CLumoDataMgr::GetSingleTon();
            if (singleton.initDataMgr(&m_Channel, &m_Channel, "t", "u", "c", 1) != INIT_SUCCESS)
                std::exit(1);
            for (int i = 0; i < kTransfers; ++i) {
                m_Channel.answer("bean { app_full_path: '/srv/\xe5\xbd\xb1' }");
                QDir(path("here")).mkdir(QString::number(i));
                if (!singleton.downloadBySoftID(std::to_string(i).c_str(), "box:1", "s", "1", true,
                                                [](const char*, int, int, int percent) {
                                                    if (percent == 0)
                                                        gate.wait([](bool open) { return open; });
                                                }))
                    std::exit(2);
            }
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    for (int i = 0; i < kTransfers; ++i)
        EXPECT_EQ(read("here/" + QString::number(i) + QString::fromUtf8("/影")), "content") << i;
}
