#pragma once

#include <memory>

#include "moxcore/string/UTF16String.h"
#include "moxui/Export.h"
#include "moxui/ui/OS_Window.h"

namespace moxui::sharedui {

inline constexpr double kToastManager_DefaultDurationInSeconds = 3;
inline constexpr int kToastManager_DefaultPriority = 0;

/// Shows short notices that go away by themselves. A toast lies above every window of the program,
/// a popup's too, near the foot of the one that it is shown over; it never takes the focus, clicks
/// go through it, and screen readers announce it. Main thread.
///
/// One toast is shown at a time. One of the same or a higher priority takes its place at once; one
/// of a lower priority waits until it has gone. Time is that of the I/O-bound executor.
class MOXUI_API UI_ToastManager {
public:
    [[nodiscard]] static UI_ToastManager* GetDefaultInstance();

    /// Shows `text`, as it stands, over `window`; over the program's active window when that is
    /// none or not to be seen. A duration that is no positive number means the default one.
    void DisplayToastMessage(ui::OS_Window const& window, moxcore::string::UTF16String const& text,
                             double seconds, int priority);

private:
    UI_ToastManager();
    ~UI_ToastManager();

    struct State;
    std::unique_ptr<State> state;
};

}  // namespace moxui::sharedui
