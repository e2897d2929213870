#pragma once

#include "moxui/controls/UI_StaticImage.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/utility/BindingTarget.h"

namespace quillomoxui::view {

/// One project in the list of the project step. Pressed, it proposes the project's root folder,
/// unless a folder of the project is proposed already, and goes on to the folder step. Main thread.
class ProjectListItem : public moxui::controls::UI_ControlView, public utility::BindingTarget {
public:
    /// `project` is not null; without one of the hosts a press does nothing.
    ProjectListItem(
        std::shared_ptr<QuilloProject> const& project,
        std::shared_ptr<ProposedSelectionNotifyingPropertyHost> const& proposedSelection,
        std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID);
    ~ProjectListItem() override;

    [[nodiscard]] std::shared_ptr<QuilloProject> const& GetProject() const { return project; }
    /// Whether a folder of the project is proposed.
    [[nodiscard]] bool IsSelected() const { return selected; }

    /// Makes the children (icon, name, chevron), if they are not there yet. They are left until
    /// somebody is about to see the row: a list may have thousands.
    void ShowContents();

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;
    bool UI_DoPointerEvent(moxui::ui::UI_Node* node, moxui::ui::PointerEvent const& event) override;
    void UI_Draw(moxui::drawbot::Drawbot* drawbot) const override;

private:
    void UpdateProjectSelectionState(std::shared_ptr<QuilloFolder> const& proposed);
    void PlaceContents();

    bool hovered = false;
    bool selected = false;
    // Null until ShowContents.
    boost::intrusive_ptr<moxui::controls::UI_StaticText> name;
    boost::intrusive_ptr<moxui::controls::UI_StaticImage> chevron;
    boost::intrusive_ptr<moxui::controls::UI_StaticImage> icon;
    std::shared_ptr<QuilloProject> const project;
    std::shared_ptr<ProposedSelectionNotifyingPropertyHost> const proposedSelection;
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const currentViewID;
};

}  // namespace quillomoxui::view
