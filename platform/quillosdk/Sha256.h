#pragma once

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quillosdk {

/// The SHA-256 of bytes that come piece by piece. One instance by one thread at a time.
class Sha256 {
public:
    using Digest = std::array<unsigned char, 32>;

    Sha256();

    void Update(std::span<char const> bytes);

    /// The checksum of all that came; nothing may follow.
    [[nodiscard]] Digest Finish();

    [[nodiscard]] static std::string InHex(Digest const& digest);

private:
    struct Deleter {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, Deleter> context;
};

/// The base64 form of `bytes`, on one line.
[[nodiscard]] std::string Base64(std::span<unsigned char const> bytes);
[[nodiscard]] std::string Base64(std::string const& text);

}  // namespace quillosdk
