#pragma once

#include <QWidget>
#include <memory>

#include "quillohostkit/Export.h"
#include "quillohostkit/ShareController.h"

namespace quillohostkit {

/// A page for the host's preferences: the account, with Sign In and Sign Out, and the default
/// destination of assets that were never shared. What is chosen takes effect at once. Main thread.
class QUILLOHOSTKIT_API PreferencesPage : public QWidget {
    Q_OBJECT

public:
    /// `controller` is any of the program's, and must outlive the page.
    explicit PreferencesPage(ShareController* controller, QWidget* parent = nullptr);
    ~PreferencesPage() override;

private:
    class Impl;
    std::unique_ptr<Impl> impl;
};

}  // namespace quillohostkit
