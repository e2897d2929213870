#pragma once

#include <QString>
#include <functional>

#include "quillohostkit/Export.h"
#include "quillohostkit/Exporter.h"

namespace quillohostkit {

/// Shares a file that is a movie for browsers already, as it is: copies it.
class QUILLOHOSTKIT_API CopyExporter : public Exporter {
public:
    /// Asked for the path of the file when the export begins, on the export's thread.
    using Path = std::function<QString()>;

    /// Copies the file at the asset's own path.
    CopyExporter();
    /// Copies the file at `path`.
    explicit CopyExporter(Path path);

    void Export(ExportJob& job) override;

private:
    Path path;
};

}  // namespace quillohostkit
