#include "host/editor/Watchdog.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace quillohost::editor {
namespace {

using namespace std::chrono_literals;

class WatchdogTest : public testing::Test {
protected:
    void Begin(char const* receiver, int loop) { watchdog.Begin(receiver, 5, loop, now); }
    void Pass(std::chrono::milliseconds time, std::chrono::milliseconds worked = 0ms) {
        now.wall += time;
        now.worked += worked;
    }
    void End() { watchdog.End(now); }

    /// What is reported, as "receiver count (too long) longest/worked ...".
    std::string Reported() {
        std::string text;
        for (auto const& each : nlohmann::json::parse(watchdog.Report()))
            text += each["receiver"].get<std::string>() + ' ' +
                    std::to_string(each["count"].get<int>()) + " (" +
                    std::to_string(each["too_long"].get<int>()) + ") " +
                    std::to_string(each["longest_ms"].get<int>()) + '/' +
                    std::to_string(each["worked_ms"].get<int>()) + ' ';
        return text;
    }

    Watchdog watchdog;
    Watchdog::Times now{};
};

TEST_F(WatchdogTest, KeepsTheLongestOfEachKindTheLongestFirst) {
    for (auto const& [receiver, time] :
         {std::pair("button", 3ms), {"view", 20ms}, {"button", 7ms}}) {
        Begin(receiver, 1);
        Pass(time, 2ms);
        End();
        Pass(100ms);  // between events nothing is measured
    }
    EXPECT_EQ(Reported(), "view 1 (1) 20/2 button 2 (0) 7/2 ");
}

TEST_F(WatchdogTest, CountsAnEventThatAnotherSendsAsPartOfThat) {
    Begin("button", 1);
    Pass(1ms);
    Begin("view", 1);
    Pass(5ms);
    End();
    Pass(1ms);
    End();
    EXPECT_EQ(Reported(), "button 1 (0) 7/0 ");
}

TEST_F(WatchdogTest, LeavesOutTheTimeOfAnInnerLoopButNotWhatItHandles) {
    Begin("button", 1);
    Begin("menu", 1);
    Pass(5000ms);  // the user looks at a menu
    Begin("row", 2);
    Pass(4ms);
    End();
    End();
    End();
    Begin("button", 1);
    Pass(2ms);
    End();
    EXPECT_EQ(Reported(), "row 1 (0) 4/0 button 1 (0) 2/0 ");
}

}  // namespace
}  // namespace quillohost::editor
