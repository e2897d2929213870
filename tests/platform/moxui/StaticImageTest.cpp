#include "moxui/controls/UI_StaticImage.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QPainter>

#include "moxcore/string/Conversions.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::geom::RectT;
using testsupport::InkOf;
using testsupport::ToolkitPicture;
using Image = boost::intrusive_ptr<UI_StaticImage>;

TEST(StaticImage, IsDrawnWholeAndAtItsOwnSizeWhateverItsPlace) {
    std::vector<QRect> inks;
    for (auto const& place : {RectT<float>{20, 30, 7, 3}, RectT<float>{20, 30, 60, 60}}) {
        testsupport::TestWindow window;
        Image const image(new UI_StaticImage);
        image->SetImageSupplyFunction(ToolkitPicture("S_ChevronRight_18"));
        EXPECT_EQ(image->GetImageRect(), (RectT<int>{0, 0, 18, 18}));
        window.Add(image, place);
        EXPECT_EQ(image->UI_GetLocalRectF(true), place);
        inks.push_back(InkOf(testsupport::PictureOf(window.Widget())));

        QImage large(2 * window.Widget().size(), QImage::Format_RGB32);
        large.setDevicePixelRatio(2);
        window.Widget().render(&large);
        auto const doubled = InkOf(large);
        EXPECT_NEAR(doubled.x(), 2 * inks.back().x(), 1);
        EXPECT_NEAR(doubled.height(), 2 * inks.back().height(), 2);
    }
    EXPECT_EQ(inks[0], inks[1]);
    EXPECT_TRUE(QRect(20, 30, 18, 18).contains(inks[0]));
    EXPECT_GE(inks[0].height(), 9);
}

TEST(StaticImage, AsksForItsPictureAnewWithAnotherThemeAndOnRequest) {
    testsupport::TestWindow window;
    Image const image(new UI_StaticImage);
    EXPECT_TRUE(image->GetImageRect().IsEmpty());
    window.Add(image, {0, 0, 18, 18});
    int asked = 0;
    std::string name = "S_Chevron_Left_6x8";
    image->SetImageSupplyFunction(
        std::make_shared<std::function<void(ui::ConstMessage*)>>([&](ui::ConstMessage* message) {
            ++asked;
            (*ToolkitPicture(name))(message);
        }));
    EXPECT_EQ(asked, 1);
    name = "S_ChevronLeft_18";
    skins::ThemeProvider::SetTheme(skins::ThemeKind::Light);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(image->GetImageRect().width, 18);
    skins::ThemeProvider::SetTheme(skins::ThemeKind::Dark);
    name = "there is none";
    image->RefreshImage();
    EXPECT_EQ(asked, 4);
    EXPECT_TRUE(image->GetImageRect().IsEmpty());
    image->SetImageSupplyFunction(nullptr);
    EXPECT_EQ(asked, 4);
}

}  // namespace
}  // namespace moxui::controls
