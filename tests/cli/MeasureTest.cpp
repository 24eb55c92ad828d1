#include "cli/progress/Measure.h"
#include "cli/progress/ProgressView.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::seconds;

TEST(Measure, ShowsThreeDigitsAndAClock)
{
    const std::pair<double, const char*> kBytes[] = {
        {0, "0 B"},          {999, "999 B"},      {999.6, "0.98 KiB"},       {1024, "1.00 KiB"},
        {10239, "10.0 KiB"}, {102400, "100 KiB"}, {1023 * 1024, "1.00 MiB"}, {1.5e9, "1.40 GiB"},
        {3e15, "2728 TiB"}};
    for (const auto& [bytes, text] : kBytes)
        EXPECT_EQ(cli::bytesText(bytes), text);
    const std::pair<double, const char*> kTimes[] = {
        {0, "0.00 s"}, {0.996, "1.0 s"}, {9.96, "10 s"}, {59.6, "1:00"}, {3599.6, "1:00:00"}};
    for (const auto& [time, text] : kTimes)
        EXPECT_EQ(cli::durationText(time), text);
    EXPECT_EQ(cli::clockText(7), "0:07");
}

TEST(Speed, IsThatOfTheLastSeconds)
{
    cli::Speed speed;
    const cli::Speed::Clock::time_point begin;
    speed.sample(begin, 0);
    EXPECT_FALSE(speed.perSecond());
    for (int i = 1; i <= 100; ++i) {
        speed.sample(begin + seconds(i), i <= 50 ? i * 10 : 500);
        EXPECT_EQ(*speed.perSecond() > 0, i < 60) << i;
    }
}

TEST(Totals, WhatAnEarlierAttemptMovedIsNoSpeed)
{
    std::vector<cli::Transfer> transfers(2);
    for (cli::Transfer& transfer : transfers) {
        transfer.get = false;
        transfer.reportsProgress = true;
        transfer.bytes = 1000;
    }
    cli::Totals totals(transfers);
    totals.sample();
    transfers[0].percent = 60; // gone on with
    transfers[1].phase = cli::Transfer::Phase::Done;
    transfers[1].wasFile = true; // kept
    while (!totals.bytesPerSecond())
        totals.sample();
    EXPECT_EQ(totals.bytesPerSecond(), 0.0);
    EXPECT_FALSE(totals.secondsLeft());
    EXPECT_DOUBLE_EQ(*totals.fraction(), 0.8);
    EXPECT_DOUBLE_EQ(*totals.movedBytes(), 1600);
}

} // namespace
