#include "moxui/backend/detail/windows/Placement.h"

#include <gtest/gtest.h>

namespace moxui::backend {
namespace {

using Rect = moxcore::geom::RectT<float>;

TEST(Placement, APopupIsMovedOntoTheScreenOnlyWhenItWouldLeaveIt) {
    Rect const screen{0, 0, 1000, 800};
    struct Case {
        char const* what;
        Rect asked;
        Rect anchor;
        Rect placed;
    };
    for (auto const& [what, asked, anchor, placed] : std::vector<Case>{
             {"fits", {400, 74, 200, 120}, {570, 50, 30, 20}, {400, 74, 200, 120}},
             {"left of the screen", {-70, 74, 200, 120}, {100, 50, 30, 20}, {0, 74, 200, 120}},
             {"right of it", {900, 74, 200, 120}, {1070, 50, 30, 20}, {800, 74, 200, 120}},
             {"no room below, but above",
              {400, 754, 200, 120},
              {570, 730, 30, 20},
              {400, 606, 200, 120}},
             {"touches the foot", {400, 680, 200, 120}, {570, 656, 30, 20}, {400, 680, 200, 120}},
             {"no room below or above",
              {400, 454, 200, 500},
              {570, 430, 30, 20},
              {400, 300, 200, 500}},
             {"not below its anchor",
              {400, 700, 200, 120},
              {610, 700, 30, 20},
              {400, 680, 200, 120}},
             {"larger than the screen", {-50, 74, 2000, 900}, {570, 50, 30, 20}, {0, 0, 2000, 900}},
         })
        EXPECT_EQ(PlacePopup(asked, anchor, screen), placed) << what;

    Rect const second{1000, -200, 1000, 800};
    EXPECT_EQ(PlacePopup({900, -210, 200, 50}, {1070, -240, 30, 20}, second),
              (Rect{1000, -200, 200, 50}));
}

TEST(Placement, TheScreenIsTheOneThatShowsMost) {
    Rect const left{0, 0, 100, 100}, right{100, 0, 100, 100}, below{0, 100, 100, 100};
    struct Case {
        char const* what;
        Rect rect;
        Rect screen;
    };
    for (auto const& [what, rect, screen] : std::vector<Case>{
             {"inside one", {110, 10, 10, 10}, right},
             {"mostly on another", {70, 10, 90, 10}, right},
             {"without an area", {150, 50, 0, 0}, right},
             {"beside all, nearest to one", {300, 20, 10, 10}, right},
             {"above all", {20, -50, 10, 10}, left},
             {"below the lowest", {20, 250, 10, 10}, below},
         })
        EXPECT_EQ(ScreenOf(rect, {left, right, below}), screen) << what;
}

}  // namespace
}  // namespace moxui::backend
