#include "host/process/Terminal.h"

#include <gmock/gmock.h>

#include "host/process/ProgressDisplay.h"
#include "moxcore/debug/Trace.h"
#include "quillohostkit/text/PlainText.h"

namespace quillohost {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

TEST(Terminal, KeepsInJsonWhatItEscapes) {
    std::string const name = "a\x1b\x7F\u009B\u202E\u2069\n";
    auto const lines = JsonLines({{"name", name}, {"broken", "\xFF"}});
    std::string text;
    for (auto const& line : lines) {
        EXPECT_EQ(quillohostkit::OneLine(line), line);
        text += line + '\n';
    }
    auto const read = nlohmann::json::parse(text);
    EXPECT_EQ(read["name"], name);
    EXPECT_EQ(read["broken"], "\uFFFD");
}

TEST(Terminal, CleansWhicheverWayATextTakes) {
    std::string const evil = "x\x1b[2J\u202E";
    std::string const shown = "x\uFFFD[2J\uFFFD";

    CaptureStdout();
    PrintLines({evil, "next"});
    PrintTraces();
    moxcore::debug::SetTraceLevel("TerminalTest", 1);
    moxcore::debug::Trace(1, "TerminalTest", evil + "\nmore\n");
    EXPECT_EQ(GetCapturedStdout(), shown + "\nnext\n" + shown + "\nmore\n");

    CaptureStderr();
    TellTraces();
    moxcore::debug::Trace(1, "TerminalTest", evil);
    moxcore::debug::SetTraceSink(nullptr);
    ProgressDisplay display;
    display.Tell(evil);
    display.Begin(evil, [](double) { return ""; });
    ShowOverLine(evil);
    EXPECT_EQ(GetCapturedStderr(),
              "TerminalTest:1 " + shown + '\n' + shown + '\n' + shown + "\n\r" + shown + "\x1b[K");
}

}  // namespace
}  // namespace quillohost
