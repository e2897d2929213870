#include "quilloauth/Secrets.h"

#include <openssl/crypto.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <system_error>

#include "quillosdk/Sha256.h"

namespace quilloauth {
namespace {

std::string Base64Url(std::span<unsigned char const> bytes) {
    auto text = quillosdk::Base64(bytes);
    text.erase(text.find_last_not_of('=') + 1);
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text;
}

}  // namespace

std::string CreateSecret() {
    std::array<unsigned char, 32> bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0)
        throw std::system_error(errno, std::generic_category(), "no random numbers");
    return Base64Url(bytes);
}

std::string ChallengeOf(std::string const& verifier) {
    quillosdk::Sha256 checksum;
    checksum.Update(verifier);
    return Base64Url(checksum.Finish());
}

bool IsSameSecret(std::string const& one, std::string const& other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

}  // namespace quilloauth
