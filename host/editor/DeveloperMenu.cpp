#include "host/editor/DeveloperMenu.h"

#include "host/commands/TraceCommand.h"
#include "moxcore/debug/DebugDatabase.h"
#include "quillohostkit/sharing/Sharing.h"

namespace quillohost::editor {
namespace {

struct Switch {
    char const* key;
    bool byDefault;
    char const* text;
};

constexpr Switch kSwitches[] = {
    {"QuilloNative.UseQuilloCppSdk", true, "Talk to the Service Through the &SDK"},
    {"UnifiedHeader.ShowQuilloNativeShareButtonDebugView", false,
     "Share Button Opens the &Debug View"},
    {"UnifiedHeader.ShowQuilloNativeShareButtonCopyLinkView", false,
     "Share Button Opens the &Copy Link View"},
    {"UnifiedHeader.ShowQuilloNativeShareButtonEncodingProgressView", false,
     "Share Button Opens the &Progress View"},
};

}  // namespace

DeveloperMenu::DeveloperMenu(QWidget& parent) : QMenu("&Developer", &parent) {
    setToolTipsVisible(true);
    auto& database = moxcore::debug::DebugDatabase::Instance();
    for (auto const& each : kSwitches) {
        auto* const action = addAction(each.text);
        action->setToolTip(each.key);
        action->setCheckable(true);
        action->setChecked(database.GetEntryAs<bool>(each.key, each.byDefault));
        connect(action, &QAction::toggled, this,
                [&database, key = each.key](bool on) { database.SetEntry(key, on); });
    }
    addSeparator();
    addAction("&Show Debug View", this, [] {
        WantTrace();
        quillohostkit::Sharing::Get()->ShowDebugView();
    });
    addAction("&Trace to Console", this, [] {
        if (auto const& viewModel = quillohostkit::Sharing::Get()->ViewModel())
            PrintTrace(*viewModel);
    });
}

}  // namespace quillohost::editor
