#pragma once

#include <QToolButton>
#include <memory>
#include <utility>

#include "quillohostkit/Export.h"
#include "quillohostkit/ShareController.h"

namespace quillohostkit {

/// A button that shares the host's asset:
///
///     auto* const share = new quillohostkit::ShareButton(this);
///     share->SetAsset([=] { return quillohostkit::Asset{path, title}; });
///     share->SetExporter(quillohostkit::FfmpegExporter([=] { return path; }));
///     toolbar->addWidget(share);
///
/// Text, icon and shortcut may be changed as those of any QToolButton. Main thread.
class QUILLOHOSTKIT_API ShareButton : public QToolButton {
    Q_OBJECT

public:
    /// `parent` owns the button.
    explicit ShareButton(QWidget* parent = nullptr);
    ~ShareButton() override;

    /// See ShareController::SetAsset.
    template <class Source>
    void SetAsset(Source asset) {
        controller->SetAsset(std::move(asset));
    }
    /// See ShareController::SetExporter.
    template <class Kind>
    void SetExporter(Kind exporter) {
        controller->SetExporter(std::move(exporter));
    }

    /// Everything else. Owned by this.
    [[nodiscard]] ShareController* GetController() const { return controller; }
    /// Its state. Owned by this.
    [[nodiscard]] ShareState* GetState() const { return controller->GetState(); }

private:
    ShareController* controller;
};

}  // namespace quillohostkit
