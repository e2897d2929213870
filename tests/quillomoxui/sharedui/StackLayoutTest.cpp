#include "quillomoxui/sharedui/StackLayout.h"

#include <gtest/gtest.h>

#include "quillomoxui/sharedui/PopupPlacement.h"

namespace quillomoxui {
namespace {

using Point = moxcore::geom::PointT<float>;
using Rect = moxcore::geom::RectT<float>;
using Padding = moxui::ui::PaddingT<float>;
using Rects = std::vector<Rect>;

Rect Swapped(Rect const& rect) {
    return {rect.y, rect.x, rect.height, rect.width};
}
Padding Swapped(Padding const& p) {
    return {p.left, p.top, p.right, p.bottom};
}

TEST(StackLayout, PlacesChildrenOneAfterAnother) {
    struct Case {
        char const* what;
        Padding padding;
        float spacing;
        Rects sizes;
        Rects placed;
        Point size;
    };
    Padding const two{2, 2, 2, 2};
    for (auto const& [what, padding, spacing, sizes, placed, size] : std::vector<Case>{
             {"no children", {1, 2, 3, 4}, 5, {}, {}, {6, 4}},
             {"three",
              two,
              4,
              {{0, 0, 5, 10}, {0, 0, 9, 20}, {0, 0, 7, 30}},
              {{2, 2, 9, 10}, {2, 16, 9, 20}, {2, 40, 9, 30}},
              {13, 72}},
             {"a hidden one takes no room and adds no spacing",
              two,
              4,
              {{0, 0, 5, 10}, {}, {0, 0, 5, 10}},
              {{2, 2, 5, 10}, {2, 16, 5, 0}, {2, 16, 5, 10}},
              {9, 28}},
             {"one without breadth of its own gets its neighbours' and counts",
              {},
              4,
              {{0, 0, 0, 10}, {0, 0, 5, 10}},
              {{0, 0, 5, 10}, {0, 14, 5, 10}},
              {5, 24}},
             {"all empty: the last one's breadth counts",
              {1, 1, 1, 1},
              4,
              {{0, 0, 8, 0}, {0, 0, 3, 0}},
              {{1, 1, 8, 0}, {1, 1, 8, 0}},
              {10, 2}},
             {"each side has its own padding",
              {1, 10, 100, 1000},
              0,
              {{0, 0, 5, 5}},
              {{10, 1, 5, 5}},
              {1015, 106}},
         }) {
        Rects rects = sizes;
        PlaceInStack(StackDirection::Down, padding, spacing, rects);
        EXPECT_EQ(rects, placed) << what;
        EXPECT_EQ(StackSize(rects, padding), size) << what;

        // To the right it is the same with the axes exchanged.
        Rects across;
        for (auto const& rect : sizes)
            across.push_back(Swapped(rect));
        PlaceInStack(StackDirection::Right, Swapped(padding), spacing, across);
        for (std::size_t i = 0; i < across.size(); ++i)
            EXPECT_EQ(Swapped(across[i]), placed[i]) << what << ", to the right, " << i;
        EXPECT_EQ(StackSize(across, Swapped(padding)), (Point{size.y, size.x})) << what;
    }
}

TEST(StackLayout, FillsTheStackAcrossAndLeavesTheLengthAlone) {
    Padding const padding{1, 2, 3, 4};
    EXPECT_EQ(FilledAcross(StackDirection::Down, padding, {100, 9}, {2, 1, 5, 50}),
              (Rect{2, 1, 94, 50}));
    EXPECT_EQ(FilledAcross(StackDirection::Right, padding, {9, 100}, {2, 1, 5, 50}),
              (Rect{2, 1, 5, 96}));
    EXPECT_EQ(FilledAcross(StackDirection::Down, padding, {5, 9}, {2, 1, 5, 50}).width, -1);
}

TEST(PopupPlacement, HangsUnderTheRightEdgeOfItsAnchor) {
    EXPECT_EQ(PopupPlace({100, 50, 30, 20}, {200, 120}), (Rect{-70, 74, 200, 120}));
}

}  // namespace
}  // namespace quillomoxui
