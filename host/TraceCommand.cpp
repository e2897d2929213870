#include "host/TraceCommand.h"

#include <cstdio>

#include "moxcore/debug/Trace.h"

namespace quillohost {
namespace {

constexpr char const* kCategory = "QuilloNative";
constexpr int kLevel = 5;

}  // namespace

void Trace(Session& session) {
    moxcore::debug::SetTraceSink(
        [](int, std::string const&, std::string const& text) { std::fputs(text.c_str(), stdout); });
    moxcore::debug::SetTraceLevel(kCategory, kLevel);
    for (auto const& account : session.ChildrenOf(session.SignIn()))
        for (auto const& workspace : session.ChildrenOf(account))
            static_cast<void>(session.ChildrenOf(workspace));
    session.ViewModel().Debug_TraceToConsole();
    moxcore::debug::SetTraceSink(nullptr);
}

}  // namespace quillohost
