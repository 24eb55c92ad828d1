#include <QCoreApplication>
#include <QTimer>
#include <iostream>
#include <lumo/components/hubline/Hubline.h>
#include <lumo/core/LumoDataMgr.h>

Q_DECLARE_METATYPE(CLumoFilterFile)

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 7)
        return 2; // ADDRESS TOKEN USER COMPANY FILE-ID NAME
    hubline::Options options;
    options.address = argv[1];
    options.token = argv[2];
    std::string reason;
    if (hubline::StartHubline(options, reason) != hubline::kOpened)
        return (std::cerr << reason << '\n', 1);
    wirecall::RpcChannel* channel = hubline::GetCurrentChannelExt().get(); // the client keeps it open
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
    if (manager.initDataMgr(channel, channel, argv[2], argv[3], argv[4], 10000) != INIT_SUCCESS)
        return 1; // the log has the reason, on standard error

    // The signal comes on a thread of the library; to bring it over, Qt must know the type of what it
    // carries.
    qRegisterMetaType<CLumoFilterFile>("CLumoFilterFile");
    QObject receiver; // lives in this thread
    QObject::connect(
        &manager, &CLumoDataMgr::reqAnalyzeImageFinished, &receiver,
        [](const CLumoFilterFile& image) {
            std::cout << image.m_ImgName.toStdString() << ": passed" << std::endl;
            QCoreApplication::quit();
        },
        Qt::QueuedConnection);

    CLumoFilterFile image;
    image.m_ImgName = QString::fromUtf8(argv[6]);
    image.m_MainFiles.append({image.m_ImgName, QByteArray(argv[5]).toInt()});
    manager.analyzeImage(image, false);
    // A failure raises no signal: whoever waits needs a limit.
    QTimer::singleShot(10000, &application, [] { QCoreApplication::exit(1); });
    return QCoreApplication::exec();
}
