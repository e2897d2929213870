#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "moxcore/classref/InterfaceRef.h"
#include "moxcore/config/Error.h"
#include "moxcore/messaging/Station.h"

namespace {

using moxcore::classref::InterfaceRef;
using moxcore::utility::Guid;
using moxcore::utility::ImmutableString;
using testing::ElementsAre;
using namespace moxcore::messaging;

class CallingListener final : public Listener {
public:
    explicit CallingListener(std::function<void(Message const&)> call) : call(std::move(call)) {}
    void ListenToMessage(Message const& message) override { call(message); }

private:
    std::function<void(Message const&)> call;
};

class MessagingTest : public testing::Test {
protected:
    void Post(Message const& message = Message(1)) { PostMessageToStation(station, message); }

    ImmutableString const station{"test"};
    std::vector<std::string> log;
};

TEST_F(MessagingTest, AMessageReachesThoseWhoListenToItsStationInTheirOrder) {
    auto const id = HashMessageTypeNameToMessageID("ListChanged");
    Guid const subject = Guid::CreateUnique();
    CallingListener first([&](Message const& message) {
        log.push_back("first");
        EXPECT_EQ(message.GetTypeID(), id);
        EXPECT_EQ(message.GetGuid(), subject);
    });
    CallingListener second([&](Message const&) { log.push_back("second"); });
    CallingListener elsewhere([&](Message const&) { log.push_back("elsewhere"); });
    AddRawListener(station, &first);
    AddRawListener(station, &second);
    AddRawListener(ImmutableString("other"), &elsewhere);
    Post(Message(id, subject));
    RemoveRawListener(station, &first);
    RemoveRawListener(ImmutableString("other"), &second);  // does not listen there
    Post(Message(id, subject));
    EXPECT_THAT(log, ElementsAre("first", "second", "second"));
    RemoveRawListener(station, &second);
    RemoveRawListener(ImmutableString("other"), &elsewhere);
}

TEST_F(MessagingTest, AListenerMayRemoveItselfAndOthersAndFailWithinItsCall) {
    CallingListener victim([&](Message const&) { log.push_back("victim"); });
    CallingListener newcomer([&](Message const&) { log.push_back("newcomer"); });
    std::unique_ptr<CallingListener> remover;
    remover = std::make_unique<CallingListener>([&](Message const&) {
        log.push_back("remover");
        RemoveRawListener(station, remover.get());
        RemoveRawListener(station, &victim);
        AddRawListener(station, &newcomer);
        throw std::runtime_error("the listener has failed");
    });
    AddRawListener(station, remover.get());
    AddRawListener(station, &victim);
    Post();
    remover.reset();
    Post();
    EXPECT_THAT(log, ElementsAre("remover", "newcomer"));
    RemoveRawListener(station, &newcomer);
}

TEST_F(MessagingTest, ARemovalWaitsForTheCallUnderWayOnAnotherThread) {
    std::latch called(1);
    std::atomic<bool> removing = false;
    std::atomic<bool> returned = false;
    CallingListener slow([&](Message const&) {
        called.count_down();
        removing.wait(false);
        for (int i = 0; i < 1000; ++i)
            std::this_thread::yield();  // a removal that does not wait has its chance to return
        returned = true;
    });
    AddRawListener(station, &slow);
    std::jthread poster([&] { Post(); });
    called.wait();
    removing = true;
    removing.notify_all();
    RemoveRawListener(station, &slow);
    EXPECT_TRUE(returned);
}

TEST(ImmutableStringTest, TheNullStringIsAnotherThanTheEmptyOneAndComesFirst) {
    ImmutableString const none;
    EXPECT_EQ(none, ImmutableString());
    EXPECT_LT(none, ImmutableString(""));
    EXPECT_LT(ImmutableString(""), ImmutableString("a"));
    EXPECT_EQ(ImmutableString("a"), ImmutableString(std::string("a")));
}

TEST(InterfaceRefTest, SharesItsObjectAndRefusesToUseNone) {
    auto const counted = std::make_shared<CallingListener>([](Message const&) {});
    {
        InterfaceRef<CallingListener> const narrow(counted);
        InterfaceRef<Listener> const wide = narrow;
        EXPECT_EQ(&*wide, counted.get());
        EXPECT_EQ(counted.use_count(), 3);
        EXPECT_TRUE(wide);
    }
    EXPECT_EQ(counted.use_count(), 1);
    InterfaceRef<Listener> const none;
    EXPECT_FALSE(none);
    EXPECT_THROW(none->ListenToMessage(Message(1)), moxcore::config::ContractViolation);
}

}  // namespace
