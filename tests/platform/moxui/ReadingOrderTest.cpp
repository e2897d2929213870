#include "moxui/backend/detail/focus/ReadingOrder.h"

#include <gtest/gtest.h>

namespace moxui::backend {
namespace {

TEST(ReadingOrder, GoesRowByRowFromTheLeft) {
    struct Case {
        char const* what;
        std::vector<moxcore::geom::RectT<float>> rects;
        std::vector<std::size_t> order;
    };
    for (auto const& [what, rects, order] : std::vector<Case>{
             {"nothing", {}, {}},
             {"one row, given backward", {{50, 0, 20, 20}, {0, 0, 20, 20}}, {1, 0}},
             {"a button a little higher than the link before it",
              {{200, 8, 84, 24}, {15, 12, 100, 14}},
              {1, 0}},
             {"two rows, the lower one given first", {{0, 30, 9, 9}, {90, 0, 9, 9}}, {1, 0}},
             {"rows that only touch", {{50, 0, 20, 20}, {0, 20, 20, 20}}, {0, 1}},
             {"a short one beside a tall one belongs to its row",
              {{0, 0, 10, 100}, {20, 40, 10, 10}, {0, 120, 10, 10}},
              {0, 1, 2}},
             {"the same place twice keeps the order given", {{0, 0, 9, 9}, {0, 0, 9, 9}}, {0, 1}},
         })
        EXPECT_EQ(ReadingOrder(rects), order) << what;
}

}  // namespace
}  // namespace moxui::backend
