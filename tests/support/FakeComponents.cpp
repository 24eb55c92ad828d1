#include "tests/support/FakeComponents.h"

#include "lumo/components/hubline/Hubline.h"

#include <google/protobuf/message.h>

#include <utility>

namespace {

FakeComponents* present = new FakeComponents; // outlives the manager, which the end of the process deletes

int transfer(const std::string& call, const boost::shared_ptr<wirecall::RpcChannel>& channel,
             bool keepExisting, bulkhaul::ProgressFunction progress, const google::protobuf::Message* message,
             const google::protobuf::Message* reserved)
{
    FakeComponents& fakes = components();
    const bool asExpected = channel == fakes.opened && reserved == nullptr && message != nullptr;
    fakes.note(asExpected ? call + (keepExisting ? " keep" : " replace") + (progress ? " told" : " untold") +
                                " {" + message->ShortDebugString() + "}"
                          : call + " with wrong arguments");
    if (fakes.onTransfer)
        fakes.onTransfer();
    if (progress)
        for (const auto& report : fakes.reports)
            progress("rpc", report.first, report.second);
    if (fakes.results.empty())
        return 0;
    const int result = fakes.results.front();
    fakes.results.pop_front();
    return result;
}

} // namespace

FakeComponents& components()
{
    return *present;
}

void forgetComponents()
{
    delete present;
    present = new FakeComponents;
}

bool bulkhaul::StartBulkhaul(int chunksInFlight, int filesInFlight, StatusFunction status)
{
    components().note("start " + std::to_string(chunksInFlight) + " " + std::to_string(filesInFlight));
    components().status = std::move(status);
    return components().bulkhaulStarts;
}

void bulkhaul::EndBulkhaul()
{
    components().note("end");
    if (components().onEnd)
        components().onEnd();
}

int bulkhaul::Download(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                       const std::string& localPath, bool keepExisting, ProgressFunction progress,
                       const google::protobuf::Message* message, google::protobuf::Message* reserved)
{
    return transfer("download " + boxPath + " " + localPath, channel, keepExisting, std::move(progress),
                    message, reserved);
}

int bulkhaul::Upload(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                     const std::string& localPath, bool keepExisting, ProgressFunction progress,
                     const google::protobuf::Message* message, google::protobuf::Message* reserved)
{
    return transfer("upload " + boxPath + " " + localPath, channel, keepExisting, std::move(progress),
                    message, reserved);
}

boost::shared_ptr<wirecall::RpcChannel> hubline::NewChannel(const std::string& address,
                                                            const std::string& token, int& code)
{
    components().note("open " + address + " " + token);
    code = components().code;
    return components().opened;
}

boost::shared_ptr<wirecall::RpcChannel> hubline::GetCurrentChannelExt()
{
    return components().current;
}

void hubline::ReleaseChannel(const std::string& address)
{
    components().note("release " + address);
}
