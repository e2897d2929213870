#pragma once

#include <memory>

#include "moxui/controls/UI_ControlView.h"
#include "quillomoxui/utility/BindingTarget.h"

namespace quillomoxui {
class QuilloUser;
}

namespace quillomoxui::view {

/// Base of the two pickers of a location. Main thread.
class SelectionBaseView : public moxui::controls::UI_ControlView, public utility::BindingTarget {
public:
    ~SelectionBaseView() override;

    /// Makes the folder that is proposed the one that is selected; nothing when none is, or when
    /// it is gone.
    void CommitProposedSelection();

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;

protected:
    explicit SelectionBaseView(std::shared_ptr<QuilloUser> const& user);

    [[nodiscard]] QuilloUser& User() const { return *user; }
    [[nodiscard]] std::shared_ptr<QuilloUser> const& SharedUser() const { return user; }

private:
    std::shared_ptr<QuilloUser> const user;
};

}  // namespace quillomoxui::view
