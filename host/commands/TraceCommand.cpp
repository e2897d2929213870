#include "host/commands/TraceCommand.h"

#include "host/process/Terminal.h"
#include "moxcore/debug/Trace.h"

namespace quillohost {

void Trace(Session& session) {
    auto const childrenOf = [&session](quillohostkit::ChildLists::Node const& node) {
        return session.AwaitLists(session.Lists().ChildrenOf(node));
    };
    for (auto const& account : childrenOf(session.SignIn()))
        for (auto const& workspace : childrenOf(account))
            static_cast<void>(childrenOf(workspace));
    PrintTrace(session.ViewModel());
}

void WantTrace() {
    constexpr int kLevel = 5;
    moxcore::debug::SetTraceLevel("QuilloNative", kLevel);
}

void PrintTrace(quillomoxui::ShareForReviewViewModel& viewModel) {
    WantTrace();
    PrintTraces();
    viewModel.Debug_TraceToConsole();
    TellTraces();
}

}  // namespace quillohost
