#include "centre/content/LoadRecords.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/content/RecordLineReader.h"
#include "centre/store/Store.h"

#include <string_view>

namespace centre {

namespace {

constexpr std::size_t kLongestLine = 1 << 20;

const RecordKind& kindOf(const std::string& name)
{
    if (const RecordKind* kind = findKind(name))
        return *kind;
    std::string names;
    for (const RecordKind& kind : recordKinds())
        names += (names.empty() ? "" : ", ") + kind.name;
    throw Error(ExitCode::Failed,
                (name.empty() ? "the key kind is missing" : "there is no kind " + escaped(name)) +
                    "; the kinds are " + names);
}

} // namespace

RecordCounts loadRecords(Store& store, std::istream& lines, const std::string& name,
                         const std::function<void(std::uint64_t)>& progress)
{
    BulkInsertion insertion(store.database(), progress);
    RecordLineReader reader;
    std::string line(kLongestLine + 1, '\0');
    std::uint64_t number = 0;
    try {
        for (number = 1;
             lines.getline(line.data(), static_cast<std::streamsize>(line.size())) || lines.gcount() > 0;
             ++number) {
            if (lines.fail())
                throw Error(ExitCode::Failed,
                            "the line is longer than " + std::to_string(kLongestLine) + " bytes");
            const std::string_view text(line.data(), lines.gcount() - (lines.eof() ? 0 : 1));
            if (text.find_first_not_of(" \t\r") == std::string_view::npos)
                continue;
            reader.read(text);
            insertion.add(kindOf(reader.kind()), reader.texts());
        }
    } catch (const Error& error) {
        throw Error(error.code(), name + ":" + std::to_string(number) + ": " + error.what());
    }
    if (lines.bad())
        throw Error(ExitCode::Failed, "can't read " + name);
    return insertion.finish();
}

} // namespace centre
