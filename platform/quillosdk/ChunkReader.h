#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "quillosdk/FileSnapshot.h"
#include "quillosdk/Sha256.h"

namespace quillosdk {

/// A piece of a file, with its checksums.
struct Chunk {
    std::uint64_t offset = 0;
    std::shared_ptr<std::string const> bytes;
    std::string checksum;  ///< of `bytes`, as Upload-Checksum has it
    std::string
        contentSha256;  ///< of the whole file, in hexadecimal; empty but with the last piece

    [[nodiscard]] std::uint64_t End() const { return offset + bytes->size(); }
};

/// Reads a file in pieces of bounded size, from wherever is asked for, and takes the checksum of
/// the whole file on the way. The buffers of pieces that have been dropped are used again. One
/// instance by one thread at a time; pieces may be dropped on any thread.
class ChunkReader {
public:
    /// The size of every piece but the last. Large enough that the turn between two of them costs
    /// nothing beside their sending, small enough to repeat one when a connection is cut.
    static constexpr std::size_t kChunkBytes = std::size_t{8} << 20;

    explicit ChunkReader(std::shared_ptr<FileSnapshot const> file);

    /// The piece at `offset`, which must not lie beyond the end of what has been read so far. Fails
    /// when the file has changed since it was opened; with the last piece, also when its path
    /// leads elsewhere by now.
    [[nodiscard]] std::shared_ptr<Chunk const> Read(std::uint64_t offset);

private:
    class Buffers;

    std::shared_ptr<FileSnapshot const> file;
    std::shared_ptr<Buffers> buffers;
    Sha256 content;  // of the file's bytes up to contentEnd
    std::uint64_t contentEnd = 0;
    std::string contentSha256;  // once contentEnd is the file's end
};

}  // namespace quillosdk
