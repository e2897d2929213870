#pragma once

#include <QImage>

#include "host/gallery/States.h"
#include "moxui/ui/UI_SubView.h"

namespace quillogallery {

/// A view of every specimen of a kind, a row for each, in every state, a column for each. Main
/// thread.
class Sheet : public moxui::ui::UI_SubView {
public:
    explicit Sheet(Kind const& kind);
    ~Sheet() override;

    /// Brings all into their states, but for the focus, which only one can have. Once, after the
    /// sheet has come into a window that is shown.
    void BringIntoStates();

    /// How the sheet looks, with the focus in each cell for it. Its window is the active one.
    [[nodiscard]] QImage Picture();

private:
    struct Cell {
        Specimen specimen;
        State state;
        boost::intrusive_ptr<moxui::controls::UI_ControlView> view;
    };

    void AddText(std::string const& text, float x, float y, bool bold);

    std::vector<Cell> cells;
};

}  // namespace quillogallery
