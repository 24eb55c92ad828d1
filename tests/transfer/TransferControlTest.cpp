#include "kestaserver.pb.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <boost/make_shared.hpp>

namespace {

typedef std::vector<std::string> Lines;

/// Of a size that nothing can hold.
class HugeMessage : public google::protobuf::Message
{
public:
    std::size_t ByteSizeLong() const override { return 0x7FFFFFFF; }
    int GetCachedSize() const override { return 0x7FFFFFFF; }
    google::protobuf::Message* New(google::protobuf::Arena*) const override { return nullptr; }
    google::protobuf::Metadata GetMetadata() const override
    {
        return kestaserver::DownloadAuthMsg().GetMetadata();
    }
};

class TransferControl : public ::testing::Test
{
protected:
    QByteArray packed(const google::protobuf::Message& message)
    {
        QVector<char> buffer(100, 'x');
        EXPECT_TRUE(m_Manager.PackProtobufMessage(&message, buffer));
        return QByteArray(buffer.constData(), buffer.size());
    }

    LogCapture m_Log;
    boost::shared_ptr<FakeChannel> m_Channel = boost::make_shared<FakeChannel>();
    FakeChannel m_Unused;
    TestManager m_Manager;
};

} // namespace

TEST_F(TransferControl, APackedMessageIsItsLengthsItsTypeNameAndItsBody)
{
    kestaserver::DownloadAuthMsg message;
    const QByteArray name = "kestaserver.DownloadAuthMsg";
    EXPECT_EQ(packed(message), QByteArray::fromHex("0000001f0000001b") + name) << "an empty body";
    message.set_data_class(1);
    EXPECT_EQ(packed(message), QByteArray::fromHex("000000210000001b") + name + QByteArray::fromHex("0801"));
    const HugeMessage huge;
    QVector<char> kept(1, 'x');
    EXPECT_THROW(m_Manager.PackProtobufMessage(&huge, kept), std::length_error);
    EXPECT_EQ(kept, QVector<char>(1, 'x'));
}

TEST_F(TransferControl, AsksAndTellsOnTheChannelOfTheHost)
{
    const struct
    {
        const char* answer; ///< null: the call fails
        bool passed;
    } cases[] = {{"passed: true", true}, {"passed: false", false}, {"", false}, {nullptr, false}};
    for (const auto& c : cases) {
        m_Log.clear();
        m_Channel->forgetCalls();
        m_Channel->answer(c.answer ? c.answer : "!gone").answer(c.answer ? "" : "!gone");
        EXPECT_EQ(m_Manager.CheckTransfer(m_Channel, "t", QString::fromUtf8("一"), -1, 2, {"f"}, {"d", "e"},
                                          {'\0', 'x'}),
                  c.passed);
        m_Manager.TransferProgress(m_Channel, "t", -1, 2, 3);
        EXPECT_EQ(m_Channel->calls(),
                  (Lines{"CheckTransfer {task_id: \"t\" serv_path: \"一\" check_a: -1 check_b: 2 "
                         "dir_path: \"d\" dir_path: \"e\" file_path: \"f\" trans_msg: \"\\000x\"}",
                         "TransferProgress {task_id: \"t\" progress_a: -1 progress_b: 2 progress_c: 3}"}));
        Lines lines;
        for (const std::string method : {"CheckTransfer", "TransferProgress"})
            for (const std::string& line :
                 framedLines(method, method + "!", c.answer ? Lines() : Lines{method + " Error : gone"}))
                lines.push_back(line);
        EXPECT_EQ(m_Log.lines(), lines);
    }
    EXPECT_EQ(m_Channel->timeouts()[0], 1000000);
    EXPECT_EQ(m_Channel->timeouts()[1], 10000);
    m_Channel->answer("").forgetCalls();
    m_Manager.CheckTransfer(m_Channel, "", "", 0, 0, {}, {}, {});
    EXPECT_EQ(m_Channel->calls()[0], "CheckTransfer {task_id: \"\" serv_path: \"\" check_a: 0 check_b: 0}");
}

TEST_F(TransferControl, TheLimitOfACheckWrapsAt32Bits)
{
    m_Unused.answer("bean { id: 1 }").answer("bean { id: 1 }");
    ASSERT_EQ(m_Manager.initDataMgr(&m_Unused, &m_Unused, "t", "u", "c", 0xFFFFFFFF), INIT_SUCCESS);
    m_Channel->answer("");
    m_Manager.CheckTransfer(m_Channel, "", "", 0, 0, {}, {}, {});
    EXPECT_EQ(m_Channel->timeouts()[0], 4294967196);
}
