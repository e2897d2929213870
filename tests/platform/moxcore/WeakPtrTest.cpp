#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

#include "moxcore/threads/MainThread.h"
#include "moxcore/utility/EnableSharedAs.h"
#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"
#include "tests/support/DrainMainThread.h"

using moxcore::utility::EnableSharedAs;
using moxcore::utility::RefCountedObjectWithWeakPtr;
using moxcore::utility::RefCountedWeakPtr;
using testsupport::DrainMainThread;

namespace {

struct Picture : RefCountedObjectWithWeakPtr {
    explicit Picture(int& destroyed) : destroyed(destroyed) {}
    ~Picture() override {
        EXPECT_TRUE(moxcore::threads::MainThread::IsCurrent());
        // What a view does as it is torn down must neither revive it nor destroy it twice.
        EXPECT_FALSE(RefCountedWeakPtr<Picture>(this).Lock());
        boost::intrusive_ptr<Picture> const again(this);
        ++destroyed;
        alive = false;
    }
    int& destroyed;
    std::atomic<bool> alive = true;
};

TEST(RefCountedWeakPtr, LosesItsObjectAtOnceAndTheMainThreadDestroysIt) {
    EXPECT_FALSE(RefCountedWeakPtr<Picture>().Lock());
    for (bool const onMainThread : {true, false}) {
        int destroyed = 0;
        boost::intrusive_ptr<Picture> picture(new Picture(destroyed));
        RefCountedWeakPtr<Picture> const weak(picture.get());
        auto last = weak.Lock();
        EXPECT_EQ(last, picture);
        picture.reset();
        EXPECT_EQ(destroyed, 0);
        if (onMainThread)
            last.reset();
        else
            std::thread([&last] { last.reset(); }).join();
        EXPECT_FALSE(weak.Lock());
        EXPECT_EQ(destroyed, onMainThread ? 1 : 0);
        DrainMainThread();
        EXPECT_EQ(destroyed, 1);
    }
}

TEST(RefCountedWeakPtr, NeverRevivesAnObjectThatIsGoing) {
    constexpr int kRounds = 500;
    constexpr int kThreads = 3;
    int destroyed = 0;
    std::vector<boost::intrusive_ptr<Picture>> strong;
    std::vector<RefCountedWeakPtr<Picture>> weak;
    for (int i = 0; i < kRounds; ++i) {
        strong.emplace_back(new Picture(destroyed));
        weak.emplace_back(strong.back().get());
    }
    std::barrier round(kThreads);
    std::atomic<int> dead = 0;
    auto const lockEach = [&](bool dropsStrong) {
        for (int i = 0; i < kRounds; ++i) {
            round.arrive_and_wait();
            if (dropsStrong) strong[i].reset();
            if (auto const locked = weak[i].Lock(); locked && !locked->alive) ++dead;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back(lockEach, i == 0);
    for (auto& thread : threads)
        thread.join();
    DrainMainThread();
    EXPECT_EQ(dead, 0);
    EXPECT_EQ(destroyed, kRounds);
}

struct Named : virtual EnableSharedAs {
    std::string name = "named";
};
struct Counted : virtual EnableSharedAs {
    int count = 7;
};
struct Node : Named, Counted {};

TEST(EnableSharedAs, GivesEachOfTheObjectsTypes) {
    auto node = std::make_shared<Node>();
    Named& named = *node;
    EXPECT_EQ(named.SharedAs<Counted>()->count, 7);
    EXPECT_EQ(named.Share<Named>(&named)->name, "named");
    EXPECT_FALSE(std::make_shared<Named>()->SharedAs<Counted>());
    auto const weak = named.WeakAs<Node>();
    EXPECT_EQ(weak.lock(), node);
    node.reset();
    EXPECT_TRUE(weak.expired());
    Node unowned;
    EXPECT_THROW(static_cast<void>(unowned.SharedAs<Node>()), std::bad_weak_ptr);
}

}  // namespace
