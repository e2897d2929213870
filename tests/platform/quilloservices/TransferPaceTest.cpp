#include "quillosdk/TransferPace.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using quillosdk::TransferPace;

constexpr TransferPace::Time kStart{1000s};
constexpr std::uint64_t kKibibyte = 1024;

class TransferPaceTest : public testing::Test {
protected:
    TransferPace pace{60s, kKibibyte};

    [[nodiscard]] auto Patience() const { return pace.Deadline() - kStart; }
};

TEST_F(TransferPaceTest, AConnectionThatIsNotThereIsNotItsMatter) {
    EXPECT_EQ(pace.Deadline(), TransferPace::Time::max());
}

TEST_F(TransferPaceTest, TheServiceMayThinkForTheStallTime) {
    pace.Begin(kStart, 0);
    EXPECT_EQ(Patience(), 60s);
    EXPECT_EQ(pace.NextLook() - kStart, 60s);
}

TEST_F(TransferPaceTest, AnAnswerMustComeAtAKibibyteASecondOverThirtySeconds) {
    pace.Begin(kStart, 0);
    pace.Receive(kStart + 50s, 1);
    EXPECT_EQ(Patience(), 80s) << "a byte a second does not buy time";
    pace.Receive(kStart + 79s, 30 * kKibibyte - 2);
    EXPECT_EQ(Patience(), 80s);
    pace.Receive(kStart + 79s, 1);
    EXPECT_EQ(Patience(), 109s) << "thirty seconds for the next thirty kibibytes";
}

TEST_F(TransferPaceTest, WithoutASlowestRateAByteIsEnough) {
    pace = TransferPace(45s, 0);
    pace.Begin(kStart, 0);
    pace.Receive(kStart + 10s, 100);
    EXPECT_EQ(Patience(), 55s);
    pace.Receive(kStart + 54s, 1);
    EXPECT_EQ(Patience(), 99s);
}

TEST_F(TransferPaceTest, ABodyMustGoOutAtTheRateOverTheStallTime) {
    pace.Begin(kStart, 1'000'000);
    EXPECT_TRUE(pace.AwaitsAcknowledgement());
    EXPECT_EQ(pace.NextLook() - kStart, 5s);
    pace.Acknowledge(kStart + 5s, 60 * kKibibyte - 1);
    EXPECT_EQ(Patience(), 60s);
    pace.Acknowledge(kStart + 58s, 60 * kKibibyte);
    EXPECT_EQ(Patience(), 118s);
    EXPECT_EQ(pace.NextLook() - kStart, 63s);
    pace.Acknowledge(kStart + 63s, 1'000'000);
    EXPECT_EQ(Patience(), 123s) << "now the service thinks";
    EXPECT_FALSE(pace.AwaitsAcknowledgement());
    pace.Begin(kStart + 70s, 0);
    EXPECT_EQ(Patience(), 130s) << "on another connection";
}

TEST_F(TransferPaceTest, TimeInWhichTheReaderWantsNoMoreDoesNotCount) {
    pace.Begin(kStart, 0);
    pace.Receive(kStart, 1);
    pace.Pause(kStart + 20s);
    pace.Pause(kStart + 25s);
    EXPECT_EQ(pace.Deadline(), TransferPace::Time::max());
    pace.Resume(kStart + 1000s);
    EXPECT_EQ(Patience(), 1010s);
    pace.Resume(kStart + 1005s);
    EXPECT_EQ(Patience(), 1010s);
}

}  // namespace
