// Ends while four threads are in a call that is not answered and four more in one that is.
// Arguments: the centre's address, token, user, company.

#include "components/hubline/Hubline.h"
#include "components/logger/LumoLogger.h"
#include "core/LumoDataMgr.h"

#include <atomic>
#include <cstdio>
#include <functional>
#include <thread>

namespace {

std::atomic<int> callsMade{0};
std::atomic<bool> ending{false};

void callUntilTheEnd(CLumoDataMgr& manager)
{
    while (!ending) {
        tagDiskTable disk;
        if (manager.getDisk(1u, disk) == RET_SUCCESS)
            ++callsMade;
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 5)
        return 2;
    CLumoLogger::GetSinglePton()->toCallback(CLumoLogger::Callback());
    hubline::Options options;
    options.address = arguments[1];
    options.token = arguments[2];
    std::string reason;
    if (hubline::StartHubline(options, reason) != hubline::kOpened) {
        std::fprintf(stderr, "%s\n", reason.c_str());
        return 3;
    }
    wirecall::RpcChannel* channel = hubline::GetCurrentChannelExt().get();
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
    if (manager.initDataMgr(channel, channel, arguments[2], arguments[3], arguments[4], 60000) !=
        INIT_SUCCESS)
        return 4;

    static std::atomic<int> waiting{0};
    for (int i = 0; i < 4; ++i) {
        std::thread([&manager] {
            ++waiting;
            tagFolderTable folder;
            manager.getFolder(1, folder); // the centre stalls here
        }).detach();
        std::thread(callUntilTheEnd, std::ref(manager)).detach();
    }
    while (waiting < 4 || callsMade < 100)
        std::this_thread::yield();
    ending = true;
    return 0;
}
