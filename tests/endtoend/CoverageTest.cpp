// Every operation of the services has a caller in the library, every method of the interface a command. That
// every operation has a handler is a test of the centre's.

#include "forgeserver.pb.h"
#include "ledgerserver.pb.h"
#include "tavrel.pb.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <string>

namespace {

/// The names of the members of CLumoDataMgr that `nm` with these options finds in a file.
std::set<std::string> membersIn(const std::string& options, const std::string& file)
{
    // NOLINTNEXTLINE(cert-env33-c): a command of the test's own on a file of the build
    const std::unique_ptr<FILE, int (*)(FILE*)> lines(popen(("nm -DC " + options + " " + file).c_str(), "r"),
                                                      pclose);
    std::set<std::string> members;
    const std::regex member("CLumoDataMgr::(\\w+)\\(");
    char line[4096];
    while (lines && std::fgets(line, sizeof line, lines.get())) {
        std::cmatch match;
        if (std::regex_search(line, match, member))
            members.insert(match[1]);
    }
    return members;
}

} // namespace

TEST(Coverage, EveryOperationHasACallerInTheLibrary)
{
    std::set<std::string> called;
    const std::regex call("(LEDGER|FORGE|TAVREL)\\((\\w+)\\)");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(LUMO_LIBRARY_SOURCES)) {
        if (entry.path().extension() != ".cpp")
            continue;
        const std::string source = readFile(entry.path());
        for (std::sregex_iterator match(source.begin(), source.end(), call), end; match != end; ++match)
            called.insert((*match)[2]);
    }
    for (const auto* service : {ledgerserver::LedgerServices::descriptor(),
                                Tavrel::TavrelServer::descriptor(), forgeserver::ForgeServices::descriptor()})
        for (int i = 0; i < service->method_count(); ++i)
            EXPECT_EQ(called.count(service->method(i)->name()), 1u) << service->method(i)->full_name();
}

TEST(Coverage, EveryMethodOfTheInterfaceHasACommand)
{
    const std::set<std::string> exceptions = {
        // for a host with a channel of its own
        "CheckTransfer", "TransferProgress", "PackProtobufMessage",
        // lumo asks by kind, and needs one way to the object
        "getImageByType", "GetSinglePton",
        // of the start, by initDataMgr
        "getCompanyID", "getRoleID",
        // not public
        "_Thread_Safe_Lock", "_Thread_Safe_UnLock", "downloadPath", "endTransfers", "fileCopiedFromDb",
        "fileCopiedToDb", "getAppFullPathByAppID", "getAppFullPathBySoftID", "getFileFullPath",
        "getFolderFullPath", "newChannel", "pathConvertParam", "populateCheckData",
        // of Qt
        "metaObject", "qt_metacall", "qt_metacast"};
    // lumo itself uses the client layer only.
    const std::set<std::string> used = membersIn("--undefined-only", LUMO_CLIENT_LIBRARY);
    EXPECT_THAT(membersIn("--undefined-only", LUMO_PROGRAM), testing::IsEmpty());
    const std::set<std::string> defined = membersIn("--defined-only", LUMO_LIBRARY);
    EXPECT_GT(defined.size(), 100u);
    for (const std::string& member : defined) {
        const bool internal =
            member == "CLumoDataMgr" || std::regex_search(member, std::regex("FromBean$|Finished$"));
        EXPECT_NE(used.count(member) != 0 || internal, exceptions.count(member) != 0) << member;
    }
}
