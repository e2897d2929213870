#include "quillomoxui/sharedui/StackViews.h"

#include <gtest/gtest.h>

#include "quillomoxui/sharedui/RecommendedSize.h"

namespace quillomoxui {
namespace {

using Rect = moxcore::geom::RectT<float>;

/// A view that would like a size.
class Sized : public moxui::ui::UI_SubView {
public:
    explicit Sized(moxcore::geom::PointT<float> const& size) : size(size) { UI_Show(true); }
    moxcore::geom::PointT<float> UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const override {
        return size;
    }
    moxcore::geom::PointT<float> size;
};

TEST(StackViews, LayOutTheirChildrenAsMeasuredWhenTheyAreGivenARectangle) {
    boost::intrusive_ptr<VStackView> const down(new VStackView);
    boost::intrusive_ptr<HStackView> const right(new HStackView);
    boost::intrusive_ptr<Sized> const first(new Sized({10.2F, 7}));
    boost::intrusive_ptr<Sized> const hidden(new Sized({99, 99}));
    hidden->UI_Show(false);
    right->ChildPushBack(first);
    right->ChildPushBack(hidden);
    right->ChildPushBack(new Sized({5, 8.5F}));
    right->SetSpacing(3);
    right->UI_Show(true);
    down->ChildPushBack(right);
    down->SetPadding(2);

    EXPECT_EQ(GetRecommendedSize(down), (moxcore::geom::PointT<float>{11 + 3 + 5 + 4, 9 + 4}));
    down->UI_SetLocalRectF({50, 60, 100, 40});
    EXPECT_EQ(down->UI_GetLocalRectF(true), (Rect{50, 60, 100, 40}));
    EXPECT_EQ(right->UI_GetLocalRectF(true), (Rect{2, 2, 96, 9}));
    EXPECT_EQ(first->UI_GetLocalRectF(true), (Rect{0, 0, 11, 9}));
    EXPECT_EQ(hidden->UI_GetLocalRectF(true), (Rect{14, 0, 0, 9}));

    // Other padding counts at the next layout only.
    down->SetPadding(10);
    EXPECT_EQ(right->UI_GetLocalRectF(true).x, 2);
    down->UI_SetLocalRectF({0, 0, 100, 40});
    EXPECT_EQ(right->UI_GetLocalRectF(true), (Rect{10, 10, 80, 9}));
}

}  // namespace
}  // namespace quillomoxui
