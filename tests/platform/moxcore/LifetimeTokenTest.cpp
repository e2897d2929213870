#include "moxcore/utility/LifetimeToken.h"

#include <gtest/gtest.h>

#include <optional>

namespace moxcore::utility {
namespace {

TEST(LifetimeToken, MakesACallOnlyWhileItLives) {
    int calls = 0;
    std::optional<LifetimeToken> token(std::in_place);
    auto const before = token->Guard([&](int count) { calls += count; });
    auto const watched = token->Watch();
    before(1);
    EXPECT_EQ(calls, 1);

    token->Reset();
    EXPECT_TRUE(watched.expired());
    before(10);
    auto const after = token->Guard([&](int count) { calls += count; });
    after(100);
    EXPECT_EQ(calls, 101);

    token.reset();
    after(1000);
    EXPECT_EQ(calls, 101);
}

TEST(LifetimeToken, RefersToItsObjectAsLongAsItLives) {
    int object = 7;
    std::optional<LifetimeToken> token(std::in_place);
    auto const reference = token->WeakTo(object);
    EXPECT_EQ(reference.lock().get(), &object);
    token.reset();
    EXPECT_EQ(reference.lock(), nullptr);
}

}  // namespace
}  // namespace moxcore::utility
