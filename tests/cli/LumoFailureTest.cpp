#include "support/Certificate.h"
#include "tests/cli/CentreProcess.h"

#include <gmock/gmock.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using clitest::CentreProcess;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct Failure
{
    std::vector<std::string> arguments;
    int exitCode;
    const char* message;
};

void expectFailure(const Outcome& outcome, const Failure& expected)
{
    const std::string what = testing::PrintToString(expected.arguments);
    EXPECT_EQ(outcome.exitCode, expected.exitCode) << what << outcome.errors;
    EXPECT_THAT(outcome.errors, StartsWith("lumo: ")) << what;
    EXPECT_THAT(outcome.errors, HasSubstr(expected.message)) << what;
    EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << what << outcome.errors;
    EXPECT_THAT(outcome.output, IsEmpty()) << what;
}

TEST(LumoWrongUse, SaysWhatWouldBeRight)
{
    const clitest::TemporaryFolder folder;
    const std::string twoLines = folder.path / "two";
    const std::string blank = folder.path / "blank";
    writeFile(twoLines, "one\ntwo\n");
    writeFile(blank, "to ken\n");
    const Failure kCases[] = {
        {{}, 2, "which command? the commands are disks, ls, tree, show, projects,"},
        {{"lss"}, 2, "no command 'lss'; the commands are disks, ls, tree, show, projects,"},
        {{"--colour", "ls"}, 2, "no option '--colour'"},
        {{"ls", "--long"}, 2, "no option '--long'"},
        {{"ls", "/a", "/b"}, 2, "'/b' is one argument too many"},
        {{"show"}, 2, "PLACE is required"},
        {{"ls", "earth"}, 2, "write a path such as /disk/folder/file"},
        {{"ls", "a\nb"}, 2, "'a\\nb' is not a valid place"},
        {{"tree", "/", "--depth", "-1"}, 2, "'-1' is not a whole number"},
        {{"get", "/"}, 2, "'/' means all disks"},
        {{"get", "/a", "/nowhere"}, 2, "there is no local folder '/nowhere'"},
        {{"get", "/a", "--keep", "--overwrite"}, 2, "excludes"},
        {{"get", "/a", "--to", ""}, 2, "'' is not the name of a folder"},
        {{"put", "/a"}, 2, "lumo put PATH... PLACE"},
        {{"put", "/nowhere", "/a"}, 2, "'/nowhere' can't be sent: No such file"},
        {{"put", "/dev/null", "/a"}, 2, "neither a file nor a folder"},
        {{"put", twoLines, "/"}, 2, "name the disk to put files on"},
        {{"put", twoLines, twoLines, "/a"}, 2, "two of the paths are named 'two'"},
        {{"versions"}, 2, "either --program NO or --module NO"},
        {{"areas", "-1"}, 2, "not a whole number"},
        {{"show", "sat"}, 2, "write its identifier too: lumo show sat ID"},
        {{"show", "sat", "x"}, 2, "'x' is not a sat identifier"},
        {{"show", "photos", "1"}, 2, "the kinds are project, type, photo,"},
        {{"show", "/a", "--csv"}, 2, "lumo show sat 7 --csv"},
        {{"types"}, 2, "PROJECT is required"},
        {{"images", "DEM"}, 2, "or PROJECT/TYPENAME as in north/DEM"},
        {{"images", "1", "--limit", "few"}, 2, "'few' is not a whole number"},
        {{"images", "1", "--limit", "0"}, 2, "write a number from 1"},
        {{"points", "4294967295"}, 2, "is not a control file identifier"},
        {{"search", "--from", "2024-02-30"}, 2, "write it as in 2024-07-31"},
        {{"search", "--from", "2024-03-01", "--to", "20240229"}, 2, "is later than --to 20240229"},
        {{"search", "--bounds", "1,2,3"}, 2, "write WEST,SOUTH,EAST,NORTH in degrees"},
        {{"search", "--bounds", "1,2,3,4,"}, 2, "write WEST,SOUTH,EAST,NORTH in degrees"},
        {{"search", "--bounds", "-1,-2,3,nan"}, 2, "is outside the earth's coordinates"},
        {{"search", "--bounds", "1,30,2,20"}, 2, "SOUTH is north of NORTH"},
        {{"search", "--bounds", "179,1,-179,2"}, 2, "take two searches"},
        {{"search", "--mark", "x"}, 2, "'x' is not a mark identifier"},
        {{"images", "1", "--mark", "1"}, 2, "--kind sat --mark 1"},
        {{"images", "1", "--kind", "point"}, 2, "no list of the point records"},
        {{"images", "1", "--kind", "control", "--mark", "1"}, 2, "that have a mark"},
        {{"link", "1", "/"}, 2, "have no project in common"},
        {{"mkdir", "/earth"}, 2, "can't be a new folder"},
        {{"mkdir", "folder:1"}, 2, "can't be a new folder"},
        {{"register", "sat"}, 2, "either KEY=VALUE... or --from FILE"},
        {{"register", "sat", "a=1", "--from", blank}, 2, "either KEY=VALUE... or --from FILE"},
        {{"register", "sat", "a"}, 2, "write KEY=VALUE"},
        {{"register", "sat", "a=1,2"}, 2, "it holds a comma"},
        {{"register", "sats", "a=1"}, 2, "the kinds are project,"},
        {{"register", "sat", "--from", "/nowhere"}, 2, "can't read '/nowhere': No such file"},
        {{"register", "sat", "--from", "/"}, 2, "can't read '/'"},
        {{"register", "sat", "--from", "/dev/null"}, 2, "its first line has the names"},
        {{"comment"},
         2,
         "which command? the commands are list, show, find, link, add, texts and places (see 'lumo comment "
         "--help')"},
        {{"mark", "drop"}, 2, "no command 'drop'; the commands are list,"},
        {{"mark", "link", "sat", "1"}, 2, "write KIND ID... and the mark's identifier"},
        {{"mark", "link", "folder", "1", "1"}, 2, "the kinds that can are photo, sat, ads, dem, dsm, dom, dlg"},
        {{"mark", "link", "point", "1", "1"}, 2, "records of kind 'point' can't have marks"},
        {{"comment", "link", "foo", "1", "1"}, 2, "dom, dlg, disk, folder, file"},
        {{"comment", "add", "", "b"}, 2, "the content is empty"},
        {{"mark", "add", "", "b"}, 2, "the content is empty"},
        {{"comment", "add", "a", "b", "sat"}, 2, "which sat?"},
        {{"comment", "link", "file", "x", "1"}, 2, "'x' is not a file identifier"},
        {{"analyze", "x"}, 2, "'x' is not a valid place"},
        {{"copy-in", "a", "/earth"}, 2, "write it from the root"},
        {{"metadata", "spot7", "1"}, 2, "spot5"},
        {{"disks", "--timeout", "soon"}, 2, "as in 500ms, 10s or 2m"},
        {{"disks", "--code-page", "big5"}, 2, "{utf8,gbk}"},
        {{"disks", "--centre", ""}, 2, "--centre HOST:PORT, set LUMO_CENTRE"},
        {{"disks", "--user", ""}, 2, "--user is missing"},
        {{"disks", "--company", ""}, 2, "--company is missing"},
        {{"disks", "--centre", "localhost"}, 2, "write HOST:PORT"},
        {{"disks", "--centre", "localhost:66000"}, 2, "write HOST:PORT"},
        {{"disks", "--centre", ":80"}, 2, "write HOST:PORT"},
        {{"disks", "--centre", "http://host:80"}, 2, "write HOST:PORT"},
        {{"disks", "--centre", "my host:80"}, 2, "write HOST:PORT"},
        {{"disks", "--centre", "::1:80"}, 2, "write HOST:PORT"},
        {{"disks", "--token-file", "/nowhere"}, 2, "its one line is the token"},
        {{"disks", "--token-file", twoLines}, 2, "one line of ASCII without blanks"},
        {{"disks", "--token-file", blank}, 2, "one line of ASCII without blanks"},
        {{"disks", "--tls-ca", "/nowhere"}, 2, "can't read the certificate file '/nowhere'"},
        {{"disks", "--tls-ca", "/"}, 2, "can't read the certificate file '/'"},
        {{"disks", "--tls-ca", blank}, 2, "does not hold a certificate"},
        {{"disks", "--tls", "--plain-text"}, 2, "give one or the other"},
        {{"disks", "--profile", "/nowhere"}, 2, "can't read the profile '/nowhere'"},
        {{"disks", "--profile", "/"}, 2, "can't read the profile '/'"},
        {{"disks", "--log", "/nowhere/log"}, 2, "can't write the log file '/nowhere/log'"},
    };
    for (const Failure& one : kCases) {
        std::vector<std::string> command{LUMO_PROGRAM};
        command.insert(command.end(), one.arguments.begin(), one.arguments.end());
        expectFailure(run(command, {"XDG_CONFIG_HOME=/nowhere", "LUMO_CENTRE=127.0.0.1:1", "LUMO_USER=demo",
                                    "LUMO_COMPANY=LUMO", "LUMO_TOKEN_FILE="}),
                      one);
    }
}

TEST(LumoFailure, EachHasItsOwnMessageAndExitCode)
{
    CentreProcess centre;
    const std::string wrongToken = centre.folder() / "wrong";
    writeFile(wrongToken, "not-the-token\n");
    writeFile(centre.folder() / "tree" / "a" / "f", "x");
    const std::string longName(255, 'n');
    writeFile(centre.folder() / "tree" / longName, "x");
    writeFile(centre.folder() / "tree" / "s" / longName, "x");
    writeFile(centre.folder() / "in-the-way" / "earth", "x");
    centre.import(centre.folder() / "tree", "earth");
    centre.administrate("add-version",
                        {"--program", "P", "--version", "1", "--path", wrongToken, "--box", "B1"});
    centre.serve();
    const Failure kCases[] = {
        {{"disks", "--centre", "127.0.0.1:1"}, 3, "can't reach the centre: 127.0.0.1:1"},
        {{"disks", "--tls"}, 3, "can't reach the centre"},
        {{"disks", "--token-file", wrongToken}, 4, "token"},
        {{"disks", "--token-file", ""}, 4, "token"},
        {{"disks", "--centre", "192.0.2.1:1", "--plain-text"}, 4, "plain text"},
        {{"disks", "--company", "公司"}, 5, "no company '公司'"},
        {{"disks", "--user", "bob"}, 6, "no user 'bob'"},
        {{"ls", "/mars"}, 7, "no disk 'mars'"},
        {{"ls", "/earth/b/c"}, 7, "no '/earth/b'"},
        {{"show", "/earth/a/f/g"}, 7, "'/earth/a/f' is a file, not a folder"},
        {{"ls", "/earth/a/f/"}, 7, "'/earth/a/f' is a file, not a folder"},
        {{"tree", "disk:99"}, 7, "no disk 99"},
        {{"ls", "folder:99"}, 7, "no folder 99"},
        {{"show", "file:99"}, 7, "no file 99"},
        {{"show", "/"}, 2, "'lumo disks' lists the disks"},
        {{"get", "/earth/b"}, 7, "no '/earth/b'"},
        {{"get", "/earth/a", "folder:2", "--to", "."}, 2, "two of the places would become 'a'"},
        {{"get", "/earth/" + longName, "/earth/s/" + longName, "--to", "t"}, 2, "would become 't/nnn"},
        {{"get", "/earth/" + longName, "file:2", "file:3", "--to", "t"}, 2, "would become 't/nnn"},
        {{"get", "/earth", centre.folder() / "in-the-way"}, 2, "is a folder, but '"},
        {{"get", "/earth", "/proc/nowhere/x"}, 2, "no local folder"},
        {{"put", wrongToken, "/earth/a/f"}, 7, "'/earth/a/f' is a file, not a folder"},
        {{"versions", "--program", "P", "9"}, 7, "has no program P 9"},
        {{"versions", "--module", "P"}, 7, "has no version of module P"},
        {{"get-program", "P", "1", "--box", "B9"}, 7, "no storage box 'B9'; it has B1"},
        {{"areas", "9"}, 7, "no area 9"},
        {{"types", "north"}, 7, "no project 'north'"},
        {{"images", "north/DEM"}, 7, "no project 'north'"},
        {{"images", "9"}, 7, "no type 9"},
        {{"points", "9"}, 7, "no control 9"},
        {{"show", "dem", "9"}, 7, "no dem 9"},
        {{"search", "--project", "9"}, 7, "no project '9'"},
    };
    for (const Failure& one : kCases)
        expectFailure(centre.lumo(one.arguments), one);
    EXPECT_EQ(centre.stop(), 0);
    expectFailure(centre.lumo({"disks"}), {{}, 3, "can't reach the centre"});
}

TEST(LumoFailure, CentreThatFailsOrStallsIsNotMistakenForAnUnknownName)
{
    const struct
    {
        const char* fault;
        std::vector<std::string> arguments;
        const char* message;
    } kCases[] = {
        {"queryCompanyTableByCompanyNo=stall", {"disks"}, "queryCompanyTableByCompanyNo: "},
        {"queryCompanyTableByCompanyNo=result:-2", {"disks"}, "reported an error"},
        {"queryUserTableByUserName=refuse", {"disks"}, "queryUserTableByUserName: "},
        {"queryDataAddress=stall", {"disks"}, "queryDataAddress: "},
        {"queryDataAddress=result:-2", {"disks"}, "queryDataAddress: the centre reported an error"},
        {"querySrcTableByUniqueness=refuse", {"ls", "/earth/a"}, "querySrcTableByUniqueness: "},
        {"querySrcTableByUniqueness=result:-2", {"ls", "/earth/a"}, "the centre lists '/earth/a'"},
        {"queryDataSrcTotal=refuse", {"projects"}, "queryDataSrcTotal: "},
        {"searchDataType=result:-2", {"search"}, "searchDataType: the centre reported an error"},
        {"queryFileTableByName=result:-2", {"ls", "/earth/none"}, "queryFileTableByName: the centre"},
    };
    CentreProcess centre;
    writeFile(centre.folder() / "tree" / "a" / "f", "x");
    centre.import(centre.folder() / "tree", "earth");
    for (const auto& one : kCases) {
        centre.serve({"--fault", one.fault});
        std::vector<std::string> arguments = one.arguments;
        // Long enough for the hello, which has the same limit, on a busy machine.
        arguments.insert(arguments.end(), {"--timeout", "5s"});
        expectFailure(centre.lumo(arguments), {{one.fault}, 8, one.message});
        EXPECT_EQ(centre.stop(), 0);
    }
}

TEST(LumoFailure, PeerThatAcceptsAndSaysNothingEndsWithTheTimeLimit)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const std::string centre = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    expectFailure(run({LUMO_PROGRAM, "--centre", centre, "--timeout", "300ms", "--user", "demo", "--company",
                       "LUMO", "disks"},
                      {"XDG_CONFIG_HOME=/nowhere"}),
                  {{centre}, 3, "can't reach the centre"});
    close(listener);
}

TEST(LumoTls, ServerIsVerifiedAgainstTheAuthorityGiven)
{
    const Certificate certificate;
    const Certificate other;
    ASSERT_TRUE(certificate.made() && other.made());
    CentreProcess centre;
    centre.serve({"--tls-cert", certificate.certificate(), "--tls-key", certificate.key()});
    EXPECT_EQ(centre.lumo({"disks", "--tls-ca", certificate.certificate()}).exitCode, 0);
    expectFailure(centre.lumo({"disks", "--tls-ca", other.certificate()}), {{}, 3, "can't reach the centre"});
    expectFailure(centre.lumo({"disks", "--tls"}), {{}, 3, "can't reach the centre"});
    expectFailure(centre.lumo({"disks"}), {{}, 3, "can't reach the centre"});
}

} // namespace
