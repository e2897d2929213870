#include "moxui/controls/UI_StaticText.h"

#include <gtest/gtest.h>

#include <QAccessible>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::string::UTF8to16;
using testsupport::InkOf;
using testsupport::ToolTipOver;
using testsupport::WidgetOf;
using Text = boost::intrusive_ptr<UI_StaticText>;

QString AccessibleName(ui::UI_Node const& node) {
    return QAccessible::queryAccessibleInterface(&WidgetOf(node))->text(QAccessible::Name);
}

/// What of `text` is seen in a window in which it was given `rect`.
QRect InkIn(UI_StaticText& text, moxcore::geom::RectT<float> const& rect,
            Qt::LayoutDirection direction = Qt::LeftToRight) {
    testsupport::TestWindow window;
    window.Container().GetPeer().GetWidget()->setLayoutDirection(direction);
    window.Add(&text, rect);
    return InkOf(testsupport::PictureOf(window.Widget()));
}

TEST(StaticText, ShowsAnyTextAsItStands) {
    struct Case {
        char const* text;
        char const* oneLine;
        char const* severalLines;
    };
    for (auto const& [text, oneLine, severalLines] : std::vector<Case>{
             {"<b>no</b> &amp; && &so", "<b>no</b> &amp; && &so", "<b>no</b> &amp; && &so"},
             {"a\tb\x1b"
              "c\x7f",
              "a b c ", "a b c "},
             {"a\r\nb\n\nc", "a b  c", "a\nb\n\nc"},
             {"a\u2028b\u0085", "a b ", "a\nb "},
             {"שלום 日本語 😀", "שלום 日本語 😀", "שלום 日本語 😀"},
         }) {
        Text const control(new UI_StaticText(UTF8to16(text)));
        EXPECT_EQ(AccessibleName(*control), QString(oneLine));
        control->SetMultiLine(true);
        EXPECT_EQ(AccessibleName(*control), QString(severalLines));
        EXPECT_EQ(control->GetText(), UTF8to16(text));
    }
}

TEST(StaticText, FitsTheSizeThatItRecommendsWhereverThatLies) {
    testsupport::TestWindow window;
    for (char const* const style : {"", "Bold", "Orvane Clean", "DejaVu Sans Mono"})
        for (char const* const words : {"Share for review:", "WAVE fj", "if", "שלום עולם"})
            for (float const x : {15.0F, 26.01F, 3.5F}) {
                Text const text(new UI_StaticText);
                text->SetText(UTF8to16(words));
                text->SetFontStyleName(style);
                auto const size = text->UI_GetRecommendedSize(nullptr);
                window.Add(text, {x, 2.5F, size.x, size.y});
                EXPECT_EQ(ToolTipOver(WidgetOf(*text)), "") << style << words << x;
                window.Add(text, {x, 2.5F, size.x - 2, size.y});
                EXPECT_EQ(ToolTipOver(WidgetOf(*text)), words) << style << words << x;
                text->UI_SetToolTip(UTF8to16("its own"), 400);
                EXPECT_EQ(ToolTipOver(WidgetOf(*text)), "its own");
                window.Container().ChildRemoveAll();
            }
}

TEST(StaticText, AFontNameIsAStyleOrAFaceOrElseTheThemesFace) {
    Text const text(new UI_StaticText(UTF8to16("A width of its own")));
    auto const width = [&](char const* name) {
        text->SetFontStyleName(name);
        return text->UI_GetRecommendedSize(nullptr).x;
    };
    EXPECT_EQ(width("Orvane Clean"), width(""));
    EXPECT_EQ(width("Regular"), width(""));
    EXPECT_GT(width("Bold"), width("Regular"));
    EXPECT_NE(width("DejaVu Sans Mono"), width("Regular"));
}

TEST(StaticText, BeginsWhereTheLayoutDoesOrStandsWhereItIsTold) {
    struct Case {
        char const* text;
        TextAlignment alignment;
        Qt::LayoutDirection direction;
        int left, right;  // the room beside the ink, of 200; -1 for any
    };
    for (auto const& [words, alignment, direction, left, right] : std::vector<Case>{
             {"Latin", TextAlignment::Leading, Qt::LeftToRight, 0, -1},
             {"שלום", TextAlignment::Leading, Qt::LeftToRight, 0, -1},
             {"Latin", TextAlignment::Leading, Qt::RightToLeft, -1, 0},
             {"שלום", TextAlignment::Leading, Qt::RightToLeft, -1, 0},
             {"Latin", TextAlignment::Trailing, Qt::LeftToRight, -1, 0},
             {"שלום", TextAlignment::Trailing, Qt::RightToLeft, 0, -1},
             {"HH", TextAlignment::Center, Qt::RightToLeft, 91, 91},
         }) {
        Text const text(new UI_StaticText(UTF8to16(words)));
        text->SetAlignment(alignment);
        auto const ink = InkIn(*text, {50, 10, 200, 14}, direction);
        // The place itself is mirrored, in a window of 400.
        int const place = direction == Qt::LeftToRight ? 50 : 150;
        if (left >= 0) {
            EXPECT_NEAR(ink.left() - place, left, 2) << words;
        }
        if (right >= 0) {
            EXPECT_NEAR(place + 199 - ink.right(), right, 2) << words;
        }
    }
}

TEST(StaticText, IsNeverCutAtTopOrFoot) {
    Text const text(new UI_StaticText(UTF8to16("Ångström gjpqy|")));
    for (char const* const style : {"", "Bold"}) {
        text->SetFontStyleName(style);
        auto const whole = InkIn(*text, {10, 40, 200, 40});
        auto const low = InkIn(*text, {10, 56, 200, 8});
        EXPECT_EQ(low.size(), whole.size());
        EXPECT_NEAR(low.center().y(), whole.center().y(), 1) << "it stays in the middle";
    }
}

TEST(StaticText, SeveralLinesAreWrappedAndEndWhereTheirPlaceDoes) {
    Text const text(new UI_StaticText(UTF8to16("one two three four five six seven eight")));
    text->SetMultiLine(true);
    auto const line = text->UI_GetRecommendedSize(nullptr);
    auto const all = InkIn(*text, {10, 10, 100, 100});
    EXPECT_LE(all.right(), 110);
    EXPECT_GT(all.height(), 2 * line.y);
    EXPECT_EQ(ToolTipOver(WidgetOf(*text)), "");

    auto const some = InkIn(*text, {10, 10, 100, 2 * line.y});
    EXPECT_LE(some.height(), 2 * line.y);
    EXPECT_GT(some.height(), line.y);
    EXPECT_FALSE(ToolTipOver(WidgetOf(*text)).isEmpty());

    text->SetText(UTF8to16("oneverylongwordthatfitsonnolineofitsown"));
    EXPECT_LE(InkIn(*text, {10, 10, 100, 100}).right(), 110);
    EXPECT_EQ(ToolTipOver(WidgetOf(*text)), "");
}

}  // namespace
}  // namespace moxui::controls
