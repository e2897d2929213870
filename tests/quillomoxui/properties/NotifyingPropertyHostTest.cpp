#include "quillomoxui/properties/NotifyingPropertyHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/utility/BindingTarget.h"
#include "tests/support/DrainMainThread.h"

namespace quillomoxui {
namespace {

using moxcore::string::AsciiToUTF16;
using testing::ElementsAre;
using testsupport::DrainMainThread;

class PropertyTest : public testing::Test {
protected:
    PropertyTest() { DrainMainThread(); }
    ~PropertyTest() override { DrainMainThread(); }

    std::shared_ptr<EncodingProgressNotifyingPropertyHost> progress =
        std::make_shared<EncodingProgressNotifyingPropertyHost>();
    std::vector<double> received;
    std::function<void(double)> const receive = [this](double value) { received.push_back(value); };
};

TEST_F(PropertyTest, EachChangeIsOneTaskWatchedOrNot) {
    progress->SetEncodingProgress(0.0);  // the value it holds
    EXPECT_EQ(DrainMainThread(), 0u);
    progress->SetEncodingProgress(0.5);
    progress->SetEncodingProgress(0.5);
    progress->SetEncodingProgress(0.75);
    EXPECT_EQ(DrainMainThread(), 2u);

    auto const one = progress->BindValueChanged(receive);
    auto const two = progress->BindValueChanged(receive);
    DrainMainThread();
    progress->SetEncodingProgress(1.0);
    EXPECT_EQ(DrainMainThread(), 1u);
}

TEST_F(PropertyTest, BindingReceivesTheCurrentValueThenEveryChangeNeverInsideTheCall) {
    progress->SetEncodingProgress(0.25);
    auto const handle = progress->BindValueChanged(receive);
    progress->SetEncodingProgress(0.5);
    progress->SetEncodingProgress(0.75);
    EXPECT_TRUE(received.empty());
    DrainMainThread();
    EXPECT_THAT(received, ElementsAre(0.25, 0.5, 0.75));
}

TEST_F(PropertyTest, CallbacksRunInBindingOrderAndOneThatThrowsStopsTheRest) {
    std::vector<int> order;
    std::vector<std::shared_ptr<BindingHandle>> handles;
    handles.push_back(progress->BindValueChanged([&](double) { order.push_back(1); }));
    DrainMainThread();
    handles.push_back(progress->BindValueChanged(std::function<void(double)>()));
    handles.push_back(progress->BindValueChanged([&](double) { order.push_back(3); }));

    int failures = 0;
    moxcore::threads::MainThread::SetFailureHandler([&](std::exception_ptr exception) {
        EXPECT_THROW(std::rethrow_exception(exception), std::bad_function_call);
        ++failures;
    });
    DrainMainThread();  // the first delivery of each: only the empty one fails
    EXPECT_EQ(failures, 1);
    order.clear();
    progress->SetEncodingProgress(0.5);
    DrainMainThread();
    moxcore::threads::MainThread::SetFailureHandler(nullptr);
    EXPECT_EQ(failures, 2);
    EXPECT_THAT(order, ElementsAre(1));
}

TEST_F(PropertyTest, DroppedHandleKeepsWhatIsQueuedAndStopsTheRest) {
    auto handle = progress->BindValueChanged(receive);
    progress->SetEncodingProgress(0.5);
    handle.reset();
    progress->SetEncodingProgress(0.75);
    DrainMainThread();
    EXPECT_THAT(received, ElementsAre(0.0, 0.5));
}

TEST_F(PropertyTest, LateBindingMissesEarlierChanges) {
    progress->SetEncodingProgress(0.5);
    auto const handle = progress->BindValueChanged(receive);
    DrainMainThread();
    EXPECT_THAT(received, ElementsAre(0.5));
}

TEST_F(PropertyTest, HandleMayOutliveItsHost) {
    auto handle = progress->BindValueChanged(receive);
    progress.reset();
    handle.reset();
    DrainMainThread();
    EXPECT_THAT(received, ElementsAre(0.0));
}

TEST_F(PropertyTest, SameCallbackBoundTwiceIsTwoBindings) {
    auto first = progress->BindValueChanged(receive);
    auto const second = progress->BindValueChanged(receive);
    DrainMainThread();
    first.reset();
    progress->SetEncodingProgress(0.5);
    DrainMainThread();
    EXPECT_THAT(received, ElementsAre(0.0, 0.0, 0.5));
}

TEST_F(PropertyTest, BindingWithoutSharedOwnerThrows) {
    EncodingProgressNotifyingPropertyHost onTheStack;
    EXPECT_THROW(static_cast<void>(onTheStack.BindValueChanged(receive)), std::bad_weak_ptr);
}

struct Receiver : utility::BindingTarget {
    explicit Receiver(std::vector<double>& log) : log(log) {}
    void OnProgress(double value) { log.push_back(value); }
    std::vector<double>& log;
};

TEST_F(PropertyTest, MemberBindingDoesNotKeepItsTargetAndSkipsItWhenGone) {
    auto target = std::make_shared<Receiver>(received);
    auto const handle = progress->BindValueChanged(target, &Receiver::OnProgress);
    DrainMainThread();
    EXPECT_EQ(target.use_count(), 1);
    progress->SetEncodingProgress(0.5);
    target.reset();
    DrainMainThread();
    EXPECT_THAT(received, ElementsAre(0.0));
}

TEST_F(PropertyTest, BindingTargetEndsItsBindingsLastFirst) {
    struct Probe : BindingHandle {
        Probe(std::vector<int>& log, int number) : log(log), number(number) {}
        ~Probe() override { log.push_back(number); }
        std::vector<int>& log;
        int number;
    };
    std::vector<int> log;
    {
        utility::BindingTarget target;
        for (int number : {1, 2, 3})
            target.RetainBinding(std::make_shared<Probe>(log, number));
    }
    EXPECT_THAT(log, ElementsAre(3, 2, 1));
}

TEST_F(PropertyTest, SetInitialStoresAndTellsNobody) {
    auto const handle = progress->BindValueChanged(receive);
    DrainMainThread();
    progress->SetInitialEncodingProgress(0.5);
    EXPECT_EQ(DrainMainThread(), 0u);
    EXPECT_EQ(progress->GetEncodingProgress(), 0.5);
    EXPECT_THAT(received, ElementsAre(0.0));
}

TEST_F(PropertyTest, NotANumberIsAlwaysAChange) {
    progress->SetEncodingProgress(std::nan(""));
    progress->SetEncodingProgress(std::nan(""));
    EXPECT_EQ(DrainMainThread(), 2u);
    auto const color = std::make_shared<ColorNotifyingPropertyHost>();
    color->SetColor({std::nanf(""), 0, 0, 0});
    color->SetColor({std::nanf(""), 0, 0, 0});
    EXPECT_EQ(DrainMainThread(), 2u);
}

TEST_F(PropertyTest, VectorsCompareTheirElementsPointers) {
    auto const folders = std::make_shared<FoldersNotifyingPropertyHost>();
    auto const one = std::make_shared<QuilloFolder>(nullptr);
    auto const two = std::make_shared<QuilloFolder>(nullptr);
    folders->SetFolders({one, two});
    folders->SetFolders({one, two});
    EXPECT_EQ(DrainMainThread(), 1u);
    folders->SetFolders({two, one});
    EXPECT_EQ(DrainMainThread(), 1u);
}

TEST_F(PropertyTest, WhatAReplacedValueRunsWhenItDiesMayUseTheProperty) {
    auto const icon = std::make_shared<AssetTypeIconNotifyingPropertyHost>();
    struct Asks {
        std::shared_ptr<AssetTypeIconNotifyingPropertyHost> host;
        ~Asks() { static_cast<void>(host->GetAssetTypeIcon()); }
    };
    auto asks = std::make_shared<Asks>(Asks{icon});
    asks->host = icon;
    icon->SetInitialAssetTypeIcon(std::make_shared<std::function<void(moxui::ui::ConstMessage*)>>(
        [asks = std::move(asks)](moxui::ui::ConstMessage*) {}));
    icon->SetInitialAssetTypeIcon(nullptr);  // a lock held here would never be released
    EXPECT_EQ(icon->GetAssetTypeIcon(), nullptr);
}

TEST_F(PropertyTest, DeliveriesKeepTheOrderOfChangesMadeOnManyThreads) {
    auto const path = std::make_shared<NameNotifyingPropertyHost>();
    UTF16String last;
    int changes = 0;
    auto const handle = path->BindValueChanged([&](UTF16String const& name) {
        last = name;
        ++changes;
    });
    constexpr int kThreads = 4;
    constexpr int kChanges = 500;
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < kThreads; ++thread)
            threads.emplace_back([&, thread] {
                for (int change = 0; change < kChanges; ++change) {
                    path->SetName(
                        AsciiToUTF16(std::to_string(thread) + ":" + std::to_string(change)));
                    auto const passing = path->BindValueChanged([](UTF16String const&) {});
                }
            });
    }
    DrainMainThread();
    EXPECT_EQ(changes, 1 + kThreads * kChanges);
    EXPECT_EQ(last, path->GetName());
}

}  // namespace
}  // namespace quillomoxui
