#include "quillosdk/Sha256.h"

#include <new>

#include "quillosdk/CryptoThreadScope.h"

namespace quillosdk {

Sha256::Sha256() {
    CryptoThreadScope const scope;
    context.reset(EVP_MD_CTX_new());
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc();
}

void Sha256::Update(std::span<char const> bytes) {
    EVP_DigestUpdate(context.get(), bytes.data(), bytes.size());
}

Sha256::Digest Sha256::Finish() {
    CryptoThreadScope const scope;
    Digest digest{};
    EVP_DigestFinal_ex(context.get(), digest.data(), nullptr);
    return digest;
}

std::string Sha256::InHex(Digest const& digest) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned char const byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::string Base64(std::span<unsigned char const> bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // and a terminator
    text.resize(
        static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                                 bytes.data(), static_cast<int>(bytes.size()))));
    return text;
}

std::string Base64(std::string const& text) {
    return Base64({reinterpret_cast<unsigned char const*>(text.data()), text.size()});
}

}  // namespace quillosdk
