#include "quillohostkit/CopyExporter.h"

#include <QFile>
#include <utility>

#include "quillohostkit/process/Failure.h"

namespace quillohostkit {
namespace {

constexpr qint64 kPiece = 1 << 20;

[[noreturn]] void ThrowFor(QFile const& file, char const* what) {
    throw Failure(FailureKind::Export, std::string(what) + " \"" + file.fileName().toStdString() +
                                           "\": " + file.errorString().toStdString() + ".");
}

}  // namespace

CopyExporter::CopyExporter() = default;

CopyExporter::CopyExporter(Path newPath) : path(std::move(newPath)) {}

void CopyExporter::Export(ExportJob& job) {
    QFile from(path ? path() : job.GetAsset().path);
    QFile to(job.OutputFile());
    if (!from.open(QIODevice::ReadOnly)) ThrowFor(from, "Cannot read");
    if (!to.open(QIODevice::WriteOnly)) ThrowFor(to, "Cannot write");
    auto const size = static_cast<double>(from.size());
    QByteArray piece;
    while (!job.IsCancelled() && !(piece = from.read(kPiece)).isEmpty()) {
        if (to.write(piece) != piece.size()) ThrowFor(to, "Cannot write");
        job.SetProgress(static_cast<double>(to.pos()) / size);
    }
    if (from.error() != QFileDevice::NoError) ThrowFor(from, "Cannot read");
    if (!to.flush()) ThrowFor(to, "Cannot write");
}

}  // namespace quillohostkit
