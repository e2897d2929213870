#include "moxui/controls/UI_HotTextURL.h"

#include <QDesktopServices>
#include <QUrl>
#include <utility>

#include "moxcore/debug/Trace.h"
#include "moxui/backend/detail/drawing/Conversions.h"

namespace moxui::controls {
namespace {

UI_HotTextURL::Opener& TheOpener() {
    static UI_HotTextURL::Opener opener;
    return opener;
}

bool IsWebAddress(QUrl const& url) {
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QStringLiteral("https") || url.scheme() == QStringLiteral("http"));
}

}  // namespace

UI_HotTextURL::UI_HotTextURL(moxcore::string::UTF16String const& text) : UI_HotTextButton(text) {}

UI_HotTextURL::~UI_HotTextURL() = default;

void UI_HotTextURL::SetURL(moxcore::string::UTF16String const& newURL) {
    url = newURL;
}

void UI_HotTextURL::SetOpener(Opener opener) {
    TheOpener() = std::move(opener);
}

void UI_HotTextURL::OnPressed() {
    UI_HotTextButton::OnPressed();
    QUrl const address(backend::ToQString(url), QUrl::StrictMode);
    if (!IsWebAddress(address)) {
        moxcore::debug::Trace(1, "moxui",
                              "A link was pressed whose address is not http or https: not opened.");
        return;
    }
    if (auto const opener = TheOpener())
        opener(url);
    else if (!QDesktopServices::openUrl(address))
        moxcore::debug::Trace(1, "moxui", "The system has no browser to open a link in.");
}

}  // namespace moxui::controls
