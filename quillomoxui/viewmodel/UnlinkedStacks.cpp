#include "quillomoxui/viewmodel/UnlinkedStacks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "quillocommon/Failures.h"

namespace quillomoxui::unlinkedstacks {
namespace {

constexpr char kNotNoted[] =
    "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NotNoted="
    "It cannot be noted that the movie is not on its review link yet ({reason}): should the "
    "program end before it is, share the movie again and look at its link.";

namespace fs = std::filesystem;

constexpr mode_t kOwnDirectory = 0700;
constexpr mode_t kOwnFile = 0600;

fs::path Directory() {
    return fs::path(moxcore::string::UTF16to8(
               moxcore::filesupport::commondirs::UserStateDir().FullPath())) /
           "unlinked-stacks";
}

void Report(std::string const& reason) {
    quillocommon::ReportFailure({quillocommon::Step::AddToReviewLink,
                                 moxcore::config::kUnknownFailure, 0,
                                 moxcore::config::Text(kNotNoted, {{"reason", reason}})});
}

template <class Work>
auto Guarded(Work work) -> decltype(work(fs::path())) {
    try {
        return work(Directory());
    } catch (std::exception const& error) {
        Report(error.what());
        return {};
    }
}

}  // namespace

bool Contains(moxcore::utility::Guid const& stack) {
    return Guarded([&](fs::path const& directory) {
        std::error_code ignored;
        return fs::exists(directory / stack.AsStdString(), ignored);
    });
}

void Add(moxcore::utility::Guid const& stack) {
    if (stack.IsNull()) return;
    Guarded([&](fs::path const& directory) {
        if (mkdir(directory.c_str(), kOwnDirectory) != 0 && errno != EEXIST)
            throw std::system_error(errno, std::generic_category(), directory.string());
        auto const file = directory / stack.AsStdString();
        int const descriptor =
            open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnFile);
        if (descriptor < 0) throw std::system_error(errno, std::generic_category(), file.string());
        close(descriptor);
        return true;
    });
}

void Remove(moxcore::utility::Guid const& stack) {
    if (stack.IsNull()) return;
    Guarded([&](fs::path const& directory) { return fs::remove(directory / stack.AsStdString()); });
}

}  // namespace quillomoxui::unlinkedstacks
