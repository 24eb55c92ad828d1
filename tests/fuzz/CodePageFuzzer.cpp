// Code pages, both ways: nothing is written beyond the capacity, counting and converting agree, one pass
// gives what two give, and what was converted once stays as it is when it goes there and back again.

#include "lumo/components/platform/CodePage.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

/// Runs a conversion without target, with enough capacity and with less, each in memory of just that size.
template <class Unit, class Convert>
std::basic_string<Unit> converted(const Convert& convert, std::size_t less)
{
    const std::size_t size = convert(nullptr, 0);
    std::vector<Unit> whole(size);
    require(convert(whole.data(), size) == size);
    std::vector<Unit> part(std::min(less, size));
    require(convert(part.data(), part.size()) == size);
    return {whole.begin(), whole.end()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<char> text(data, data + size); // in memory of its own, so that reading on is found
    const std::size_t less = size / 2;
    for (const unsigned page : {platform::kGbkCodePage, platform::kUtf8CodePage}) {
        const auto units = [&](const auto& bytes) {
            return converted<char16_t>(
                [&](char16_t* to, std::size_t capacity) {
                    return platform::toUtf16(page, bytes.data(), bytes.size(), to, capacity);
                },
                less);
        };
        const auto bytes = [&](unsigned to, const std::u16string& from) {
            return converted<char>(
                [&](char* target, std::size_t capacity) {
                    return platform::fromUtf16(to, from.data(), from.size(), target, capacity);
                },
                less);
        };
        const std::u16string wide = units(text);
        require(wide.size() <= size);
        const std::string back = bytes(page, wide);
        require(bytes(page, units(back)) == back);
        for (const unsigned to : {platform::kGbkCodePage, platform::kUtf8CodePage}) {
            const std::string twice = bytes(to, wide);
            std::vector<char> target(std::max(twice.size(), less));
            require(platform::recode(page, to, text.data(), size, target.data(), target.size()) ==
                    twice.size());
            require(std::equal(twice.begin(), twice.end(), target.begin()));
            std::vector<char> tight(less);
            require(platform::recode(page, to, text.data(), size, tight.data(), less) == twice.size());
        }
    }
    return 0;
}
