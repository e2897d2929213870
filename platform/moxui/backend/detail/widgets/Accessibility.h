#pragma once

class QWidget;

namespace moxui::backend {

/// Tells assistive tools the roles of buttons, links and views that draw themselves, and lets them
/// press these. Once is enough; calling it again does nothing.
void TellAssistiveToolsAboutViews();

/// Marks a label as a status: an assistive tool is told of each text that it gets (Announce).
void SetStatus(QWidget& label);

}  // namespace moxui::backend
