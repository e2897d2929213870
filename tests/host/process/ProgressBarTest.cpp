#include "host/process/ProgressBar.h"

#include <gmock/gmock.h>

namespace quillohost {
namespace {

using std::chrono::seconds;

TEST(ProgressBar, GivesUpWhatDoesNotFit) {
    ProgressBar const bar{"Uploading", 0.5, "1.5 MB/s", seconds(75)};
    struct Row {
        int width;
        char const* line;
    };
    Row const rows[] = {
        {200, "Uploading [####################....................]  50 %  1.5 MB/s  1:15 left"},
        {50, "Uploading [######.....]  50 %  1.5 MB/s  1:15 left"},
        {46, "Uploading  50 %  1.5 MB/s  1:15 left"},
        {30, "Uploading  50 %  1:15 left"},
        {20, "Uploading  50 %"},
        {6, "Upload"},
        {0, ""},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(bar.Format(row.width), row.line);
        EXPECT_LE(bar.Format(row.width).size(), static_cast<std::size_t>(row.width));
    }
}

TEST(ProgressBar, CountsTheColumnsOfWideCharactersAndMarks) {
    ProgressBar const bar{"アップロード中", 0.5, "", {}};
    EXPECT_EQ(bar.Format(31), "アップロード中 [####....]  50 %");
    EXPECT_EQ(bar.Format(5), "アッ");
    EXPECT_EQ((ProgressBar{"u\u0308x", 0.5}).Format(2), "u\u0308x");
    EXPECT_EQ((ProgressBar{"\xFFx", 0.5}).Format(1), "\xFF");
}

TEST(ProgressBar, SaysThatAllIsDoneOnlyWhenItIs) {
    EXPECT_EQ((ProgressBar{"x", 0.9999}).Format(8), "x  99 %");
    EXPECT_EQ((ProgressBar{"x", 1}).Format(8), "x 100 %");
}

TEST(ProgressBar, WritesTimesAndSizesForPeople) {
    EXPECT_EQ(FormatTime(seconds(7)), "0:07");
    EXPECT_EQ(FormatTime(seconds(3599)), "59:59");
    EXPECT_EQ(FormatTime(seconds(3723)), "1:02:03");
    EXPECT_EQ(FormatBytes(999), "999 bytes");
    EXPECT_EQ(FormatBytes(1000), "1.0 kB");
    EXPECT_EQ(FormatBytes(999'960), "1.0 MB");
    EXPECT_EQ(FormatBytes(2.5e15), "2500.0 TB");
}

}  // namespace
}  // namespace quillohost
