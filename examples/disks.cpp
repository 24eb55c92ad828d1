#include <iostream>
#include <lumo/components/hubline/Hubline.h>
#include <lumo/core/LumoDataMgr.h>
#include <lumo/core/TextEncoding.h>

int main(int argc, char** argv)
{
    if (argc != 5)
        return 2; // ADDRESS TOKEN USER COMPANY
    hubline::Options options;
    options.address = argv[1];
    options.token = argv[2];
    std::string reason;
    if (hubline::StartHubline(options, reason) != hubline::kOpened)
        return (std::cerr << reason << '\n', 1);
    wirecall::RpcChannel* channel = hubline::GetCurrentChannelExt().get(); // the client keeps it open
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
    QList<tagDiskTable> disks;
    if (manager.initDataMgr(channel, channel, argv[2], argv[3], argv[4], 10000) != INIT_SUCCESS ||
        manager.getDisk(disks) != RET_SUCCESS)
        return 1; // the log has the reason, on standard error
    for (const tagDiskTable& disk : disks)
        std::cout << disk.diskID << ' ' << convertToUtf8(disk.diskName) << '\n';
}
