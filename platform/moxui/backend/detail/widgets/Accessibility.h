#pragma once

namespace moxui::backend {

/// Tells assistive tools the roles of buttons, links and views that draw themselves, and lets them
/// press these. Once is enough; calling it again does nothing.
void TellAssistiveToolsAboutViews();

}  // namespace moxui::backend
