// Ends while work is under way. Arguments: the centre's address, token, user, company; then nothing, for
// eight threads in a call that is not answered, after calls that were; or a folder with the folders "0", "1"
// and so on, for downloads of disk 1 into them and uploads of them to it.

#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/logger/LumoLogger.h"
#include "lumo/core/LumoDataMgr.h"

#include <QTextCodec>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

namespace {

std::atomic<int> waiting{0};

/// Counts the threads that have entered the call which the centre stalls.
void countEntries(const char* text, int length)
{
    if (std::string(text, static_cast<std::size_t>(length)).find("Enter Function : getFolder ") !=
        std::string::npos)
        ++waiting;
}

void call(CLumoDataMgr& manager)
{
    for (int i = 0; i < 8; ++i) {
        std::thread([&manager] {
            tagDiskTable disk;
            manager.getDisk(1u, disk);
            tagFolderTable folder;
            manager.getFolder(1, folder);
        }).detach();
    }
    while (waiting < 8)
        std::this_thread::yield();
}

bool startTransfers(CLumoDataMgr& manager, const QString& folder)
{
    for (int i = 0; i < 4; ++i) {
        const QString each = folder + "/" + QString::number(i);
        if (!manager.download(each + "/down", {0, 1}, true, TransferCallback()) ||
            !manager.upload(each, {0, 1}, 0xFFFFFFFF, true, TransferCallback()))
            return false;
    }
    return true;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 5 && count != 6)
        return 2;
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // for local names
    CLumoLogger::GetSinglePton()->toCallback(countEntries);
    hubline::Options options;
    options.address = arguments[1];
    options.token = arguments[2];
    std::string reason;
    if (hubline::StartHubline(options, reason) != hubline::kOpened) {
        static_cast<void>(std::fprintf(stderr, "%s\n", reason.c_str()));
        return 3;
    }
    wirecall::RpcChannel* channel = hubline::GetCurrentChannelExt().get();
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
    if (manager.initDataMgr(channel, channel, arguments[2], arguments[3], arguments[4], 60000) !=
        INIT_SUCCESS)
        return 4;

    if (count == 6)
        return startTransfers(manager, arguments[5]) ? 0 : 5;
    call(manager);
    return 0;
}
