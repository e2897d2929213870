#include "quillomoxui/viewmodel/OutputFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/filesupport/File.h"
#include "moxcore/string/Conversions.h"

namespace quillomoxui {

using moxcore::filesupport::File;
using moxcore::filesupport::commondirs::UserCacheDir;
using moxcore::string::StdToUTF16String;
using moxcore::string::UTF16toStdString;

namespace {

constexpr mode_t kOwnDirectory = 0700;

/// Removes the directory that was made for the file, if there is one; not while a movie is in it.
void RemoveOwnDirectory(UTF16String const& path) {
    auto const directory = std::filesystem::path(UTF16toStdString(path)).parent_path();
    if (!moxcore::utility::Guid(directory.filename().string()).IsNull()) rmdir(directory.c_str());
}

}  // namespace

UTF16String OutputFiles::PathOf(UTF16String const& fileName) {
    return File(UserCacheDir(), fileName).FullPath();
}

OutputFiles::Output OutputFiles::Claim(Guid const& shareID, UTF16String const& fileName) {
    auto path = PathOf(fileName);
    auto const processingID = StdToUTF16String(Guid::CreateUnique().AsStdString());
    auto const ownDirectory = PathOf(processingID);
    bool isTaken = false;
    {
        std::lock_guard lock(mutex);
        auto const found = holders.find(path);
        isTaken = found != holders.end() && found->second.shareID != shareID;
        if (isTaken) path = File(File(ownDirectory, 0), fileName).FullPath();
        // An export that has been overtaken never gets as far as its upload.
        std::erase_if(holders, [](auto const& other) { return !other.second.isUploading; });
        holders[path] = {shareID};
    }
    // A missing directory shows when the host cannot write there.
    if (isTaken) mkdir(UTF16toStdString(ownDirectory).c_str(), kOwnDirectory);
    return {path, processingID};
}

void OutputFiles::NoteUpload(Guid const& shareID, UTF16String const& path) {
    std::lock_guard lock(mutex);
    auto const found = holders.find(path);
    if (found != holders.end() && found->second.shareID == shareID)
        found->second.isUploading = true;
}

void OutputFiles::Release(Guid const& shareID, UTF16String const& path) {
    {
        std::lock_guard lock(mutex);
        auto const found = holders.find(path);
        if (found != holders.end() && found->second.shareID == shareID) holders.erase(found);
    }
    RemoveOwnDirectory(path);
}

void OutputFiles::Delete(Guid const& shareID, Output const& output) {
    {
        std::lock_guard lock(mutex);
        auto const found = holders.find(output.path);
        if (found != holders.end()) {
            if (found->second.shareID != shareID) return;
            holders.erase(found);
        }
    }
    File(output.path, 0).Delete();
    RemoveOwnDirectory(output.path);
}

}  // namespace quillomoxui
