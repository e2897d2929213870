#include "quillohostkit/exporting/ExportDirectory.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <system_error>

#include "moxcore/config/Localizer.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/FileFailures.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "export-";  // then the process, "-", a number

/// Whether the process that has made the directory `name` has ended.
bool IsLeftover(std::string_view name) {
    if (!name.starts_with(kPrefix)) return false;
    name.remove_prefix(kPrefix.size());
    pid_t process = 0;
    auto const [rest, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (error != std::errc() || process <= 0 || rest == name.data() + name.size() || *rest != '-')
        return false;
    return kill(process, 0) != 0 && errno == ESRCH;
}

void RemoveLeftovers(fs::path const& parent) {
    std::error_code error;
    for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (IsLeftover(entry->path().filename().native())) fs::remove_all(entry->path(), ignored);
    }
}

fs::path Make() {
    static std::atomic<int> number = 0;
    fs::path const parent(
        moxcore::string::UTF16to8(moxcore::filesupport::commondirs::UserCacheDir().FullPath()));
    RemoveLeftovers(parent);
    auto directory =
        parent / (std::string(kPrefix) + std::to_string(getpid()) + "-" + std::to_string(++number));
    std::error_code error;
    fs::remove_all(directory, error);  // of a former process of the same number
    if (fs::create_directories(directory, error)) return directory;
    throw Failure(FailureKind::Export,
                  Text(kCannotMake, {{"file", directory.string()}, {"reason", error.message()}}));
}

}  // namespace

ExportDirectory::ExportDirectory(fs::path const& newOutput)
    : output(newOutput), directory(Make()) {}

ExportDirectory::~ExportDirectory() {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
}

void ExportDirectory::Publish() const {
    std::error_code error;
    auto const size = fs::file_size(File(), error);
    if (error || size == 0)
        throw Failure(
            FailureKind::Export,
            Text(error ? "$$$/Vistrel/quillohostkit/Export/NoMovie=The export has made no movie."
                       : "$$$/Vistrel/quillohostkit/Export/Empty=The export has made no movie: its "
                         "file is empty."));
    fs::rename(File(), output, error);
    if (error)
        throw Failure(FailureKind::Export,
                      Text(kCannotWrite, {{"file", output.string()}, {"reason", error.message()}}));
}

}  // namespace quillohostkit
