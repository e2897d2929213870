#include "quillohostkit/sharing/CloseQuestion.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {

bool EndsWith(QWidget const& window) {
    if (!QGuiApplication::quitOnLastWindowClosed()) return false;
    auto const windows = QApplication::topLevelWidgets();
    return std::none_of(windows.begin(), windows.end(), [&window](QWidget const* other) {
        // Those that Qt counts: no popup, no tooltip, nothing that belongs to another window.
        return other != &window && other->isVisible() && !other->parentWidget() &&
               other->windowType() != Qt::ToolTip && other->windowType() != Qt::Tool &&
               other->windowType() != Qt::Popup && other->testAttribute(Qt::WA_QuitOnClose);
    });
}

bool MayStop(QWidget& window, ShareState const& state) {
    QMessageBox question(QMessageBox::Question, window.windowTitle(),
                         QtText("$$$/Vistrel/quillohostkit/Close/Question=\"{title}\" is still "
                                "being shared. Stop the share and quit?",
                                {{"title", state.title().toStdString()}}),
                         QMessageBox::NoButton, &window);
    question.setTextFormat(Qt::PlainText);
    bool const hasMovie = state.phase() == ShareState::Phase::Uploading ||
                          state.phase() == ShareState::Phase::Finishing;
    question.setInformativeText(QtText(hasMovie
                                           ? "$$$/Vistrel/quillohostkit/Close/ExportKept=The "
                                             "movie's export is kept; share it again to upload it."
                                           : "$$$/Vistrel/quillohostkit/Close/ExportRemoved=What "
                                             "has been exported so far is removed."));
    auto* const stop = question.addButton(
        QtText("$$$/Vistrel/quillohostkit/Close/Stop=Stop and Quit"), QMessageBox::DestructiveRole);
    auto* const keep = question.addButton(
        QtText("$$$/Vistrel/quillohostkit/Close/Keep=Keep Sharing"), QMessageBox::RejectRole);
    question.setDefaultButton(keep);
    question.setEscapeButton(keep);
    question.exec();
    return question.clickedButton() == stop;
}

}  // namespace quillohostkit
