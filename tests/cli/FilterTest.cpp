#include "cli/moving/Filter.h"

#include <gtest/gtest.h>

TEST(Filter, PatternsMatchTheEndOfAPathFromTheBeginOfAName)
{
    const struct
    {
        const char* pattern;
        const char* path;
        bool matches;
    } kCases[] = {
        {"*.tif", "a.tif", true},
        {"*.tif", "x/y/a.tif", true},
        {"*.tif", "a.tiff", false},
        {"/*.tif", "x/a.tif", false},
        {"/x/*.tif", "x/a.tif", true},
        {"x/*", "x/y/z", false},
        {"x/**", "x/y/z", true},
        {"**/z", "z", true},
        {"x/**/z", "x/z", true},
        {"x/**/z", "x/a/b/z", true},
        {"?.tif", "ab.tif", false},
        {"[a-c]1", "b1", true},
        {"[!a-c]1", "b1", false},
        {"b.tif", "ab.tif", false},
        {"[", "[", false},
        {"a?b", "a/b", false},
        {"a[/]b", "a/b", false},
        {"", "", true},
        {"*a*a*a*b", "aaaaaaaaa", false},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(cli::matchesGlob(one.pattern, one.path), one.matches) << one.pattern << " " << one.path;
}

TEST(Filter, ExclusionsPrecedeInclusionsAndPruneFolders)
{
    cli::Filter filter;
    filter.include("*.tif");
    filter.exclude("old/");
    EXPECT_TRUE(filter.admitsFile("x/a.tif"));
    EXPECT_FALSE(filter.admitsFile("a.txt"));
    EXPECT_TRUE(filter.admitsFolder("x"));
    EXPECT_FALSE(filter.admitsFolder("x/old"));
    EXPECT_FALSE(filter.keepsEmptyFolders());
}
