
#include <QAbstractItemView>
#include <QTest>

#include "platform/moxui/MultiColumnTreeFixture.h"

namespace moxui::controls {
namespace {

using moxcore::string::AsciiToUTF16;
using testsupport::RunEvents;
using MultiColumnTreeDirectionTest = MultiColumnTreeFixture;

TEST_F(MultiColumnTreeDirectionTest, IsMirroredWhereTheLayoutGoesFromRightToLeft) {
    auto const picture = testsupport::ToolkitPicture("QuilloFolder_Sm");
    UI_PictureSupplyMessage message;
    (*picture)(&message);
    drawbot::ColorRGBA const red{1, 0, 0, 1};
    using Rect = moxcore::geom::RectT<float>;
    std::function<void(drawbot::Drawbot&, Rect const&)> const draws[] = {
        [&](auto& bot, auto& cell) {
            bot.GetSurface()->PaintRect(red, {cell.x, cell.y, 40, 9});
        },
        [&](auto& bot, auto& cell) {
            auto const path = bot.GetSupplier()->NewPath();
            path->AddRect({cell.x + 5, cell.y, 40, 9});
            bot.GetSurface()->FillPath(red, *path);
        },
        [&](auto& bot, auto& cell) {
            bot.GetSurface()->DrawImage(*message.GetPicture(), {cell.x, cell.y}, 1);
        },
        [&](auto& bot, auto& cell) {
            auto const font = bot.GetSupplier()->NewFont("", 12, "");
            bot.GetSurface()->DrawString(red, *font, AsciiToUTF16("HHHH"), {cell.x, cell.y + 12});
        },
        [&](auto& bot, auto& cell) {
            bot.GetSurface()->PushClip({cell.x, cell.y, 30, 30});
            bot.GetSurface()->PaintRect(red, {cell.x - 20, cell.y, 90, 9});
            bot.GetSurface()->PopClip();
        },
    };
    Add(nullptr, "leaf");
    for (auto const& draw : draws) {
        tree->SetDrawCellFunction(
            [&](drawbot::Drawbot* bot, Row const&, int, Rect const& cell) { draw(*bot, cell); });
        QRect inks[2];
        for (auto const direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            View().setLayoutDirection(direction);
            RunEvents();
            inks[direction] = testsupport::InkOf(testsupport::PictureOf(View()));
        }
        EXPECT_LT(inks[Qt::LeftToRight].right(), 100);
        EXPECT_EQ(inks[Qt::RightToLeft].size(), inks[Qt::LeftToRight].size());
        EXPECT_NEAR(inks[Qt::RightToLeft].right(), 299 - inks[Qt::LeftToRight].left(), 2);
    }
}

TEST_F(MultiColumnTreeDirectionTest, IsWorkedInItsDirection) {
    Fill();
    View().setLayoutDirection(Qt::RightToLeft);
    Key(Qt::Key_Home);
    Key(Qt::Key_Down);
    Heard();
    Key(Qt::Key_Left);
    Key(Qt::Key_Right);
    auto const row = View().visualRect(View().currentIndex());
    // Rows begin at the right: the arrow of a row of the second level is the second one from there.
    QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, QPoint(300 - 24, row.center().y()));
    EXPECT_EQ(Heard(), "open ant; close ant; open ant; ");
}

}  // namespace
}  // namespace moxui::controls
