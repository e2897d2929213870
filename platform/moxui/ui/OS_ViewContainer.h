#pragma once

#include "moxui/ui/UI_SubView.h"

namespace moxui::ui {

/// The topmost view of a window: what is put into it is in the window. Main thread.
class MOXUI_API OS_ViewContainer : public UI_SubView {
public:
    ~OS_ViewContainer() override;

    /// How many of the window's units make one of the views', across and down. 1 and 1 here: both
    /// count in units that do not depend on the screen's scale.
    [[nodiscard]] moxcore::geom::PointT<float> GetScaleFactors() const { return {1, 1}; }

    [[nodiscard]] drawbot::SupplierInterface const* UI_GetDrawSupplier() const override;

protected:
    /// Takes over the widget's side of the view.
    explicit OS_ViewContainer(std::unique_ptr<backend::Peer> peer);
};

}  // namespace moxui::ui
