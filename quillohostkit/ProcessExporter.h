#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include "quillohostkit/Export.h"
#include "quillohostkit/Exporter.h"

namespace quillohostkit {

/// Exports with a program of the host's choice, run without a shell. It ends with the host, however
/// that ends, and is killed when the export is cancelled. It has failed when its exit status is not
/// 0; the last line of its standard error is shown to the user then.
class QUILLOHOSTKIT_API ProcessExporter : public Exporter {
public:
    /// `program` is looked up beside the host's own and in PATH unless it holds a "/". In
    /// `arguments`, "{output}" stands for the file to write, "{path}" and "{title}" for the
    /// asset's.
    ProcessExporter(QString program, QStringList arguments);

    /// Looks for the progress in each line of both outputs (a carriage return ends a line, too).
    /// The first group of `pattern` is a number, in percent; with a second group it is that many of
    /// so many: "frame (\\d+) of (\\d+)".
    void SetProgressPattern(QRegularExpression pattern);

    void Export(ExportJob& job) override;
    [[nodiscard]] Thread GetThread() const override;

private:
    QString program;
    QStringList arguments;
    QRegularExpression pattern;
};

}  // namespace quillohostkit
