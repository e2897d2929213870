#include "quillomoxui/viewmodel/DiagnosticTrace.h"

#include <cstddef>
#include <deque>
#include <ostream>

#include "moxcore/debug/Trace.h"
#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui {

namespace {

constexpr char kCategory[] = "QuilloNative";
constexpr int kLevel = 5;

/// Whether the dump is wanted; asked anew only when the answer may have changed.
bool IsWanted() {
    static unsigned seen = moxcore::debug::TraceChangeCount();
    static bool wanted = moxcore::debug::TraceEnabled(kCategory, kLevel, 1);
    if (unsigned const count = moxcore::debug::TraceChangeCount(); count != seen) {
        seen = count;
        wanted = moxcore::debug::TraceEnabled(kCategory, kLevel, 1);
    }
    return wanted;
}

std::size_t CountNodes(std::shared_ptr<QuilloNode> const& root) {
    std::size_t count = 0;
    for (std::deque<std::shared_ptr<QuilloNode>> waiting{root}; !waiting.empty(); ++count) {
        auto const children = waiting.front()->GetChildNodes();
        waiting.pop_front();
        waiting.insert(waiting.end(), children.begin(), children.end());
    }
    return count;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, UTF16String const& text) {
    return out << moxcore::string::UTF16to8(text).c_str() << std::flush;
}

std::ostringstream& operator<<(std::ostringstream& out, std::shared_ptr<QuilloNode> const& node) {
    static UTF16String indentation;
    static UTF16String const step = moxcore::string::AsciiToUTF16("    ");
    std::ostream& text = out;
    text << indentation << node->GetTypeAbbreviation() << " :  \"" << node->GetName() << "\"  "
         << node->GetID() << std::endl;
    auto const outer = indentation;
    indentation += step;
    for (auto const& child : node->GetChildNodes())
        out << child;
    indentation = outer;
    return out;
}

std::ostringstream& operator<<(std::ostringstream& out,
                               std::shared_ptr<ShareForReviewViewModel> const& viewModel) {
    std::ostream& text = out;
    text << "CurrentViewID :  " << ShareForReviewViewIDAsString(viewModel->GetCurrentViewID())
         << std::endl;
    text << "ReviewLinkURL :  " << viewModel->GetReviewLinkURL() << std::endl;
    out << std::shared_ptr<QuilloNode>(viewModel->GetUser());
    text << std::endl;
    return out;
}

void ShareForReviewViewModel::Debug_TraceToConsole() {
    std::ostringstream dump;
    dump << Share(this);
    if (IsWanted())
        moxcore::debug::Trace(kLevel, kCategory, "ShareForReviewViewModel\n" + dump.str() + "\n");
    // Counted even when nothing is traced: that the walk itself survives is what a developer wants
    // to see.
    auto const count = CountNodes(GetUser());
    if (IsWanted())
        moxcore::debug::Trace(
            kLevel, kCategory,
            "ShareForReviewViewModel nodes count = " + std::to_string(count) + "\n");
}

}  // namespace quillomoxui
