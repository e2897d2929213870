#pragma once

#include <memory>
#include <string>
#include <string_view>

struct evp_md_ctx_st;
struct XXH3_state_s;

namespace quilloservice {

/// A running checksum. A copy continues independently, so that input can be reverted. One thread at
/// a time.
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

    /// The checksum of the input so far, as raw bytes. More input may follow.
    [[nodiscard]] std::string Value() const;

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
        void operator()(XXH3_state_s* context) const;
    };

    // One of the two is used, depending on the algorithm.
    std::unique_ptr<evp_md_ctx_st, Free> context;
    std::unique_ptr<XXH3_state_s, Free> fastContext;
};

/// SHA-256 of `bytes`, as raw bytes.
std::string Sha256(std::string_view bytes);

/// HMAC-SHA-256 of `text`, as raw bytes.
std::string HmacSha256(std::string_view key, std::string_view text);

/// Compares two secrets in constant time.
bool IsSameSecret(std::string_view one, std::string_view other);

/// `count` cryptographically secure random bytes.
std::string RandomBytes(std::size_t count);

}  // namespace quilloservice
