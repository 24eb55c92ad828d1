// The answers of a centre to the manager: every method ends, and a download makes nothing outside its target.

#include "forgeserver.pb.h"
#include "ledgerserver.pb.h"
#include "lumo/components/logger/LumoLogger.h"
#include "lumo/core/LumoDataMgr.h"
#include "tavrel.pb.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/Script.h"
#include "tests/support/FakeComponents.h"

#include <boost/make_shared.hpp>
#include <google/protobuf/text_format.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

namespace fs = std::filesystem;
using M = CLumoDataMgr;

const fs::path& root()
{
    static const fs::path folder = makeFolder();
    return folder;
}

/// The singleton, ready to call. Its end waits for its transfers.
class Manager : public CLumoDataMgr
{
public:
    explicit Manager(ScriptedChannel& channel)
    {
        m_Instance = this;
        fuzz::Script start;
        require(google::protobuf::TextFormat::ParseFromString(
            "answers { message { [type.googleapis.com/ledgerserver.CompanyUtilBeanRsp] { result: 0 bean { "
            "id: 7 } } } }"
            "answers { message { [type.googleapis.com/ledgerserver.UserUtilBeanRsp] { result: 0 bean { id: 8 "
            "} } } }",
            &start));
        channel.play(start);
        require(initDataMgr(&channel, &channel, "token", "user", "company", 1000) == INIT_SUCCESS);
    }

    using CLumoDataMgr::m_Instance;
};

template <class Type>
Type sample()
{
    if constexpr (std::is_same_v<Type, const char*> || std::is_same_v<Type, QString>)
        return "name";
    else if constexpr (std::is_same_v<Type, unsigned int>)
        return 1;
    else
        return Type();
}

using Run = std::function<void(CLumoDataMgr&)>;

/// Runs a method with sample arguments. An overload is chosen by its argument types.
template <class... Arguments, class Result>
Run call(Result (M::*method)(Arguments...))
{
    return [method](CLumoDataMgr& manager) {
        std::tuple<std::decay_t<Arguments>...> values{sample<std::decay_t<Arguments>>()...};
        std::apply([&](auto&... each) { (manager.*method)(static_cast<Arguments>(each)...); }, values);
    };
}

/// Searches and lists the records of a type of that name.
Run ofType(const char* name)
{
    return [name](CLumoDataMgr& manager) {
        tagTypeTable type{};
        std::copy_n(name, std::char_traits<char>::length(name), type.dataType);
        QList<tagImageData> images;
        manager.searchByDataType(type, tagQueryCondition(), images);
        manager.getImageByType(type, images);
    };
}

/// Downloads a place of the catalogue. What moves files is a fake, so that only folders are made.
Run download(ENUM_DATA_TYPE kind)
{
    return [kind](CLumoDataMgr& manager) {
        const auto inside = QString::fromStdString((root() / "inside").string());
        manager.download(inside, {kind, 1U}, true, [](const char*, int, int, int) {});
    };
}

const Run kRuns[] = {
    call<unsigned, tagDiskTable&>(&M::getDisk),
    call<QList<tagDiskTable>&>(&M::getDisk),
    call(&M::getFolder),
    call(&M::getFolderID),
    call(&M::getFolderByParentID),
    call<const QList<unsigned>&, QList<tagFileTable>&>(&M::getFile),
    call(&M::getFileByName),
    call(&M::getFileByParentID),
    call<unsigned, tagDataTable&>(&M::getData),
    call<QList<tagDataTable>&>(&M::getData),
    call<QList<tagImageData>&>(&M::getData),
    call<unsigned, QList<tagTypeTable>&>(&M::getDataTypeByDataID),
    call(&M::getKFImage),
    call<unsigned, QList<tagKFImageTable>&>(&M::getKFImageByTypeID),
    call<unsigned, QList<tagSatTable>&>(&M::getSatImageByTypeID),
    call<unsigned, QList<tagImageData>&>(&M::getSatImageByTypeID),
    call(&M::getSatByDataAndMark),
    call(&M::getAdsImageByDataID),
    call(&M::getCtrlFileByTypeID),
    call<unsigned, QList<tagCtrlPointTable>&>(&M::getCtrlPoint),
    call<unsigned, QList<tagDemTable>&>(&M::getDemByTypeID),
    call<unsigned, QList<tagDsmTable>&>(&M::getDsmByTypeID),
    call<unsigned, QList<tagDomTable>&>(&M::getDomByTypeID),
    call<unsigned, QList<tagDlgTable>&>(&M::getDlgByTypeID),
    call(&M::searchDataType),
    ofType("DOM"),
    ofType("\xCE\xC0\xD0\xC7\xD3\xB0\xCF\xF1"), // satellite images, in GBK
    call(&M::getDataByFolder),
    call(&M::createFolder),
    call<QList<tagCommentInfo>&>(&M::getCommentInfo),
    call(&M::getCommentContent),
    call(&M::getCommentState),
    call<QList<tagCommentInfo>&>(&M::getImageComment),
    call(&M::analyzeImage),
    call(&M::analyzeImages),
    call<unsigned, const QString&, bool>(&M::fileCopy),
    call(&M::getSpot5FromMetadataDim),
    call(&M::getSpot6FromDim),
    call(&M::getAlosFromSummary),
    call(&M::getAdsFromSup),
    call(&M::getNationalArea),
    call(&M::getKestaList),
    call(&M::getKestaIP),
    call(&M::getVersionBySoftID),
    call(&M::getLatestVersionByAppID),
    download(DATA_TYPE_DISK),
    download(DATA_TYPE_FOLDER),
    download(DATA_TYPE_FILE),
};

} // namespace

std::vector<const google::protobuf::ServiceDescriptor*> scriptedServices()
{
    return {ledgerserver::LedgerServices::descriptor(), forgeserver::ForgeServices::descriptor(),
            Tavrel::TavrelServer::descriptor()};
}

void runScript(const fuzz::Script& script)
{
    CLumoLogger::GetSinglePton()->toCallback({});
    forgetComponents();
    const auto channel = boost::make_shared<ScriptedChannel>();
    components().opened = channel;
    fs::create_directories(root() / "inside");
    {
        Manager manager(*channel);
        channel->play(script);
        kRuns[script.choice() % std::size(kRuns)](manager);
    }
    Manager::m_Instance = nullptr;
    require(std::distance(fs::directory_iterator(root()), {}) == 1);
    fs::remove_all(root() / "inside");
}
