#include <gtest/gtest.h>

#include <cstdlib>

#include "moxcore/string/Conversions.h"
#include "moxcore/string/TimeText.h"

namespace {

using namespace std::chrono_literals;

TEST(FormatTimeOfDay, WritesTheTimeAsTheLocaleOfTimesDoes) {
    setenv("TZ", "UTC", 1);
    moxcore::threads::TimePoint const time{14h + 5min + 59s};
    struct Row {
        char const* all;
        char const* time;
        char const* lang;
        char const* text;
    };
    Row const rows[] = {
        {"", "", "", "14:05"},
        {"", "", "C.UTF-8", "14:05"},
        {"", "", "de_DE.UTF-8", "14:05"},
        {"", "de_DE.UTF-8", "en_US.UTF-8", "14:05"},
        {"", "en_US.UTF-8", "de_DE.UTF-8", "2:05\u202FPM"},
        {"ar_EG.UTF-8", "en_US.UTF-8", "en_US.UTF-8", "٢:٠٥ م"},
    };
    for (auto const& row : rows) {
        setenv("LC_ALL", row.all, 1);
        setenv("LC_TIME", row.time, 1);
        setenv("LANG", row.lang, 1);
        EXPECT_EQ(moxcore::string::UTF16to8(moxcore::string::FormatTimeOfDay(time)), row.text);
    }
    for (char const* const name : {"LC_ALL", "LC_TIME", "LANG"})
        unsetenv(name);
}

}  // namespace
