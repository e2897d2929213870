#include "moxui/datatransfer/ClipboardSendData.h"

#include <QClipboard>
#include <QGuiApplication>

#include "moxui/backend/detail/drawing/Conversions.h"

namespace moxui::datatransfer {

ClipboardSendData::ClipboardSendData() = default;
ClipboardSendData::~ClipboardSendData() = default;

void ClipboardSendData::PutText(moxcore::string::UTF16String const& newText) {
    text = newText;
}

void ClipboardSendData::SendToSystemClipboard() const {
    if (text) QGuiApplication::clipboard()->setText(backend::ToQString(*text));
}

std::unique_ptr<ClipboardSendData> NewClipboardSendData() {
    return std::make_unique<ClipboardSendData>();
}

}  // namespace moxui::datatransfer
