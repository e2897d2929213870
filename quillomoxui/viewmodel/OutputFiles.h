#pragma once

#include <map>
#include <mutex>

#include "moxcore/utility/Guid.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui {

/// The files that shares export to, in the user's cache directory. A movie that is being uploaded,
/// or that the host may still be writing for another share, is not overwritten. Any thread.
class OutputFiles {
public:
    using Guid = moxcore::utility::Guid;

    /// Where a share exports to, and the name of this export.
    struct Output {
        UTF16String path;
        UTF16String processingID;
    };

    /// The path at which a file of that name stands when nobody is in its way.
    [[nodiscard]] static UTF16String PathOf(UTF16String const& fileName);

    /// Names the file that the host is to export to for a share: where its name is taken, in a
    /// directory of its own, which is made. A share that has not begun its upload loses its claim.
    [[nodiscard]] Output Claim(Guid const& shareID, UTF16String const& fileName);

    /// The share begins to upload its file.
    void NoteUpload(Guid const& shareID, UTF16String const& path);

    /// The share needs its file no longer. It stays, and is the next share's to write over.
    void Release(Guid const& shareID, UTF16String const& path);

    /// Deletes the share's file, unless a later share exports to the same place.
    void Delete(Guid const& shareID, Output const& output);

private:
    /// Who writes or reads a file.
    struct Holder {
        Guid shareID;
        bool isUploading = false;
    };

    std::mutex mutex;
    std::map<UTF16String, Holder> holders;  // by path; guarded by mutex
};

}  // namespace quillomoxui
