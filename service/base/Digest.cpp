#include "service/base/Digest.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <xxhash.h>

#include <stdexcept>

namespace quilloservice {

namespace {

void Check(int result) {
    if (result != 1) throw std::runtime_error("a checksum failed");
}

}  // namespace

void Digest::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

void Digest::Free::operator()(XXH3_state_s* context) const {
    XXH3_freeState(context);
}

Digest::Digest(Algorithm algorithm) {
    if (algorithm == Algorithm::Xxh128) {
        fastContext.reset(XXH3_createState());
        Check(fastContext && XXH3_128bits_reset(fastContext.get()) == XXH_OK);
        return;
    }
    context.reset(EVP_MD_CTX_new());
    EVP_MD const* type = algorithm == Algorithm::Sha1 ? EVP_sha1() : EVP_sha256();
    Check(EVP_DigestInit_ex(context.get(), type, nullptr));
}

Digest::Digest(Digest const& other) {
    if (other.fastContext) {
        fastContext.reset(XXH3_createState());
        Check(fastContext != nullptr);
        XXH3_copyState(fastContext.get(), other.fastContext.get());
        return;
    }
    context.reset(EVP_MD_CTX_new());
    Check(EVP_MD_CTX_copy_ex(context.get(), other.context.get()));
}

Digest& Digest::operator=(Digest const& other) {
    *this = Digest(other);
    return *this;
}

void Digest::Update(std::string_view bytes) {
    if (fastContext)
        Check(XXH3_128bits_update(fastContext.get(), bytes.data(), bytes.size()) == XXH_OK);
    else
        Check(EVP_DigestUpdate(context.get(), bytes.data(), bytes.size()));
}

std::string Digest::Value() const {
    if (fastContext) {
        XXH128_canonical_t canonical;
        XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(fastContext.get()));
        return {reinterpret_cast<char const*>(canonical.digest), sizeof canonical.digest};
    }
    Digest finished(*this);
    unsigned char value[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    Check(EVP_DigestFinal_ex(finished.context.get(), value, &size));
    return {reinterpret_cast<char const*>(value), size};
}

std::string Sha256(std::string_view bytes) {
    Digest digest;
    digest.Update(bytes);
    return digest.Value();
}

std::string HmacSha256(std::string_view key, std::string_view text) {
    unsigned char value[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    Check(HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()),
               reinterpret_cast<unsigned char const*>(text.data()), text.size(), value,
               &size) != nullptr);
    return {reinterpret_cast<char const*>(value), size};
}

bool IsSameSecret(std::string_view one, std::string_view other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

std::string RandomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    Check(RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)));
    return bytes;
}

}  // namespace quilloservice
