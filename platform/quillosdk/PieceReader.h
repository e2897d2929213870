#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quillosdk/BodySource.h"
#include "quillosdk/FileSnapshot.h"
#include "quillosdk/Sha256.h"

namespace quillosdk {

/// A piece of a file, with its checksum.
struct Piece {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::string checksum;                    ///< as Upload-Checksum has it
    std::shared_ptr<BodySource const> body;  ///< reads it from the file again

    [[nodiscard]] std::uint64_t End() const { return offset + size; }
};

/// Takes the checksums of a file's pieces, in whatever order is asked for, and beside them that of
/// the whole file, from its start to its end. It keeps no piece: what is sent is read again, while
/// the system still has it in memory. One instance by one thread at a time.
class PieceReader {
public:
    explicit PieceReader(std::shared_ptr<FileSnapshot const> file);

    /// The piece of `size` bytes at `offset`. As many bytes of the whole file are hashed meanwhile,
    /// the piece's own if they are next. Fails when the file has changed since it was opened; with
    /// the file's last piece, also when its path leads elsewhere by now.
    [[nodiscard]] std::shared_ptr<Piece const> Read(std::uint64_t offset, std::uint64_t size);

    /// Of the whole file, in hexadecimal. Hashes what is left of it, nothing once every piece has
    /// been read.
    [[nodiscard]] std::string const& ContentSha256();

private:
    void HashTo(std::uint64_t end);

    std::shared_ptr<FileSnapshot const> file;
    std::string slice;  // what is read and hashed at a time
    Sha256 content;     // of the file's bytes up to contentEnd
    std::uint64_t contentEnd = 0;
    std::string contentSha256;  // once it has been asked for
};

}  // namespace quillosdk
