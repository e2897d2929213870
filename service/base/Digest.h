#pragma once

#include <memory>
#include <string>
#include <string_view>

struct evp_md_ctx_st;
struct XXH3_state_s;

namespace quilloservice {

/// A running checksum. Copies go on independently, which is how a chunk that turns out damaged
/// is taken back. One thread at a time.
class Digest {
public:
    enum class Algorithm { Sha1, Sha256, Xxh128 };

    Digest() : Digest(Algorithm::Sha256) {}
    explicit Digest(Algorithm algorithm);
    Digest(Digest const& other);
    Digest& operator=(Digest const& other);
    Digest(Digest&&) noexcept = default;
    Digest& operator=(Digest&&) noexcept = default;
    ~Digest() = default;

    void Update(std::string_view bytes);

    /// The checksum, raw bytes, of what has been fed so far; more may follow.
    [[nodiscard]] std::string Value() const;

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
        void operator()(XXH3_state_s* context) const;
    };

    // One of the two, by the algorithm.
    std::unique_ptr<evp_md_ctx_st, Free> context;
    std::unique_ptr<XXH3_state_s, Free> fastContext;
};

/// SHA-256 of `bytes`, raw.
std::string Sha256(std::string_view bytes);

/// HMAC-SHA-256 of `text`, raw.
std::string HmacSha256(std::string_view key, std::string_view text);

/// Whether two secrets are equal; how long that takes does not tell where they differ.
bool IsSameSecret(std::string_view one, std::string_view other);

/// `count` bytes from the system's secure random source.
std::string RandomBytes(std::size_t count);

}  // namespace quilloservice
