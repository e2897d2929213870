#include "host/gallery/Sheet.h"

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QWidget>
#include <algorithm>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/drawbot/MeasuringDrawbot.h"
#include "moxui/ui/UI_NodeManager.h"

namespace quillogallery {
namespace {

constexpr float kMargin = 12;
constexpr float kNames = 170;
constexpr float kHeader = 28;
constexpr float kGapAcross = 24;
constexpr float kGapDown = 12;
constexpr float kNarrowestColumn = 60;

moxcore::geom::PointT<float> SizeOf(Specimen const& specimen) {
    auto const drawbot = moxui::drawbot::MeasuringDrawbot::Get(
        moxui::ui::UI_NodeManager::Get(true)->GetDefaultDrawSupplier());
    auto const wish = specimen.make()->UI_GetRecommendedSize(drawbot.get());
    return {specimen.size.x > 0 ? specimen.size.x : wish.x,
            specimen.size.y > 0 ? specimen.size.y : wish.y};
}

}  // namespace

Sheet::Sheet(Kind const& kind) {
    float column = kNarrowestColumn;
    std::vector<moxcore::geom::PointT<float>> sizes;
    for (auto const& specimen : kind.specimens) {
        sizes.push_back(SizeOf(specimen));
        column = std::max(column, sizes.back().x);
    }
    column += kGapAcross;
    std::vector<State> states;  // that any of them has
    for (auto const state : kStates)
        if (std::any_of(kind.specimens.begin(), kind.specimens.end(),
                        [state](auto const& specimen) { return Has(specimen, state); }))
            states.push_back(state);
    auto const left = [&](std::size_t place) {
        return kMargin + kNames + column * static_cast<float>(place);
    };

    for (std::size_t place = 0; place < states.size(); ++place)
        AddText(NameOf(states[place]), left(place), kMargin, true);
    float y = kMargin + kHeader;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        auto const& specimen = kind.specimens[i];
        AddText(specimen.name, kMargin, y, false);
        for (std::size_t place = 0; place < states.size(); ++place) {
            if (!Has(specimen, states[place])) continue;
            auto const view = specimen.make();
            ChildPushBack(view);
            view->UI_SetLocalRectF({left(place), y, sizes[i].x, sizes[i].y});
            view->UI_Show(true);
            cells.push_back({specimen, states[place], view});
        }
        y += std::max(sizes[i].y, 16.0F) + kGapDown;
    }
    UI_SetLocalRectF({0, 0, left(states.size()), y + kMargin});
    UI_Show(true);
}

Sheet::~Sheet() = default;

void Sheet::BringIntoStates() {
    for (auto const& cell : cells)
        if (cell.state != State::Focused) BringInto(cell.state, cell.specimen, *cell.view);
}

QImage Sheet::Picture() {
    auto& widget = *moxui::backend::GetWidget(*this);
    auto& window = *widget.window();
    auto const grab = [&](QRect const& place) {
        QCoreApplication::processEvents();
        // The window, since it has the ground.
        return window.grab(QRect(widget.mapTo(&window, place.topLeft()), place.size()));
    };
    window.setFocus();
    auto sheet = grab(widget.rect());
    for (auto const& cell : cells) {
        if (cell.state != State::Focused) continue;
        BringInto(State::Focused, cell.specimen, *cell.view);
        int const ring = 6;
        auto const place =
            moxui::backend::GetWidget(*cell.view)->geometry().adjusted(-ring, -ring, ring, ring);
        auto const focused = grab(place);
        QPainter(&sheet).drawPixmap(place.topLeft(), focused);
    }
    return sheet.toImage();
}

void Sheet::AddText(std::string const& text, float x, float y, bool bold) {
    boost::intrusive_ptr<moxui::controls::UI_StaticText> const view(
        new moxui::controls::UI_StaticText(moxcore::string::UTF8to16(text)));
    if (bold) view->SetFontStyleName("Bold");
    ChildPushBack(view);
    view->UI_SetLocalRectF({x, y, kNames, 16});
    view->UI_Show(true);
}

}  // namespace quillogallery
