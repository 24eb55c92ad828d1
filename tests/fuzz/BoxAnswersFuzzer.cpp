// The answers of a storage box to a transfer: nothing is written outside the target or through a link below
// it, and a transfer that succeeds leaves its target.

#include "components/bulkhaul/files/Chunks.h"
#include "haulbox.pb.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/Script.h"
#include "tests/support/Files.h"

#include <boost/make_shared.hpp>

#include <filesystem>
#include <map>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMiB = 1 << 20;

const fs::path& root()
{
    static const fs::path folder = makeFolder();
    return folder;
}

class BoxChannel : public ScriptedChannel
{
    void complete(const fuzz::Answer& answer, const google::protobuf::Message& request,
                  google::protobuf::Message& response) override
    {
        if (auto* opened = dynamic_cast<haulbox::OpenRsp*>(&response)) {
            complete(answer, *opened);
        } else if (auto* fetch = dynamic_cast<haulbox::FetchRsp*>(&response)) {
            for (haulbox::Content& content : *fetch->mutable_contents())
                complete(answer, content);
        } else if (auto* digests = dynamic_cast<haulbox::DigestsRsp*>(&response)) {
            if (answer.right_digests())
                digests->mutable_digests()->resize(static_cast<const haulbox::DigestsReq&>(request).chunks() *
                                                   sizeof(bulkhaul::Digest));
        } else if (auto* list = dynamic_cast<haulbox::ListRsp*>(&response)) {
            for (haulbox::Entry& entry : *list->mutable_entries())
                if (entry.below()[0] == '@')
                    entry.set_below((root() / "outside").string() + entry.below().substr(1));
        }
    }

    template <class Piece>
    static void complete(const fuzz::Answer& answer, Piece& piece)
    {
        if (piece.data().size() < answer.grow())
            piece.mutable_data()->resize(std::min<std::size_t>(answer.grow(), kMiB + 1));
        if (answer.right_digests())
            piece.set_digest(bulkhaul::toBytes(bulkhaul::digestOf(piece.data())));
    }
};

/// What a transfer finds at its local path, by its first three bits.
void prepare(unsigned choice)
{
    const fs::path local = root() / "inside/name";
    fs::remove_all(root() / "inside");
    fs::create_directory(root() / "inside");
    switch (choice % 8) {
    case 0:
        break;
    case 1:
        return writeFile(local, "old");
    case 2:
        return writeFile(local, std::string(2 * kMiB + 5, '\0'));
    case 3:
        return writeFile(root() / "inside/.name.lumo-part", std::string(kMiB + 5, '\0'));
    case 4:
        return fs::create_symlink(root() / "outside/victim", local);
    default:
        writeFile(local / "a/b", "old");
        writeFile(local / "large", std::string(kMiB + 1, 'x'));
        fs::create_directory_symlink(root() / "outside", local / "link");
    }
}

} // namespace

std::vector<const google::protobuf::ServiceDescriptor*> scriptedServices()
{
    return {haulbox::BoxServices::descriptor()};
}

void runScript(const fuzz::Script& script)
{
    static const bool started = bulkhaul::StartBulkhaul(2, 2, [](int, const std::string&) {});
    require(started);
    writeFile(root() / "outside/victim", "outside");
    prepare(script.choice());
    const bool upload = (script.choice() & 8) != 0, keep = (script.choice() & 16) != 0;
    bulkhaul::ProgressFunction progress;
    if ((script.choice() & 32) != 0)
        progress = [](const std::string&, int, int) {};
    const auto channel = boost::make_shared<BoxChannel>();
    channel->play(script);
    const fs::path local = root() / "inside/name";
    const auto move = upload ? &bulkhaul::Upload : &bulkhaul::Download;
    const int code = move(channel, "/box/name", local.string(), keep, progress, nullptr, nullptr);

    require(code != bulkhaul::kDone || fs::exists(fs::symlink_status(local)));
    const std::map<std::string, std::string> outside = treeOf(root() / "outside");
    require(outside == std::map<std::string, std::string>{{"victim", "outside"}});
    require(std::distance(fs::directory_iterator(root()), {}) == 2);
}
