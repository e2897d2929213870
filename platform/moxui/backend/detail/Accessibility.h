#pragma once

namespace moxui::backend {

/// Tells assistive tools the roles of links and of views that draw themselves, and lets them press
/// these. Once
/// is enough; calling it again does nothing.
void TellAssistiveToolsAboutViews();

}  // namespace moxui::backend
