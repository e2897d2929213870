#pragma once

#include <functional>
#include <vector>

#include "moxcore/utility/Guid.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/view/ProjectListItem.h"

namespace quillomoxui::view {

/// One workspace of the project step: its name and a row for each project. Main thread.
class WorkspaceSectionView : public moxui::controls::UI_ControlView {
public:
    /// `workspace` is not null. The hosts are those of the rows.
    WorkspaceSectionView(
        std::shared_ptr<QuilloWorkspace> const& workspace,
        std::shared_ptr<ProposedSelectionNotifyingPropertyHost> const& proposedSelection,
        std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID);
    ~WorkspaceSectionView() override;

    /// `function` runs when the projects, and with them the height, have changed.
    void SetSizeChangedFunction(std::function<void()> function);

    /// Makes all rows anew. The keyboard's focus goes over to the row of the same project.
    void OnProjectsChanged(NodeVector<QuilloProject> const& projects);

    [[nodiscard]] std::vector<boost::intrusive_ptr<ProjectListItem>> const& GetItems() const {
        return items;
    }

    /// Has the rows between `top` and `bottom`, in the section's coordinates, show what they hold.
    void ShowRows(float top, float bottom);

    /// The ID of the project whose row has the keyboard's focus; null when none has.
    [[nodiscard]] moxcore::utility::Guid GetFocusedProject() const;
    /// Gives the focus to the row of that project once it is in its place.
    void FocusWhenThere(moxcore::utility::Guid const& projectID) { focusWanted = projectID; }

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

private:
    boost::intrusive_ptr<moxui::controls::UI_StaticText> header;
    std::vector<boost::intrusive_ptr<ProjectListItem>> items;
    std::shared_ptr<ProposedSelectionNotifyingPropertyHost> const proposedSelection;
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const currentViewID;
    std::function<void()> sizeChanged;
    moxcore::utility::Guid focusWanted;
    float firstRowTop = 0;
    /// How many of the items are in their place: it depends on nothing but the header's height.
    std::size_t placedCount = 0;
};

}  // namespace quillomoxui::view
