// Lines of records for the image catalogue: loaded or refused; a file that is refused leaves nothing.

#include "centre/base/Error.h"
#include "centre/content/LoadRecords.h"
#include "centre/database/Database.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/Store.h"
#include "tests/fuzz/Require.h"

#include <cstdint>
#include <sstream>

namespace {

/// An empty catalogue of the company LUMO.
centre::Store& store()
{
    static centre::Store* const kept = [] {
        const std::string folder = makeFolder() + "/data";
        centre::Store::create(folder, "LUMO", "demo");
        return new centre::Store(folder);
    }();
    return *kept;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The last line is refused always, so that the catalogue is empty for the next text.
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size) + "\n!");
    try {
        centre::loadRecords(store(), lines, "name", [](std::uint64_t) {});
        require(false);
    } catch (const centre::Error& error) {
        require(std::string(error.what()).rfind("name:", 0) == 0);
    }
    for (const centre::RecordKind& kind : centre::recordKinds())
        require(store().database().value("SELECT count(*) FROM " + kind.name) == "0");
    return 0;
}
