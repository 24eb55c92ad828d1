#include "lumo/components/platform/Utf8.h"

#include <gtest/gtest.h>

namespace {

TEST(Utf8, WhatATerminalWouldActOnIsEscaped)
{
    const struct
    {
        std::string text;
        const char* shown;
    } kCases[] = {{"plain 影像", "plain 影像"},
                  {"a\nb\tc\rd", "a\\nb\\tc\\rd"},
                  {"\x1b[31mred", "\\x1B[31mred"},
                  {std::string("a\0b", 3), "a\\x00b"},
                  {"\x7f", "\\x7F"},
                  {"\u009b", "\\u009B"},
                  {"gpj.\u202eexe", "gpj.\\u202Eexe"},
                  {"\u2028", "\\u2028"},
                  {"\xff\xc0\xaf\xe4\xb8", "\\xFF\\xC0\\xAF\\xE4\\xB8"}};
    for (const auto& one : kCases)
        EXPECT_EQ(platform::escaped(one.text), one.shown);
}

} // namespace
