#include "quillohostkit/media/FileChecksum.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>
#include <fstream>
#include <memory>
#include <vector>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;

namespace {

/// Frees at its end what libcrypto keeps for the thread: it is one of a pool, and may outlive
/// libcrypto.
struct CryptoThreadScope {
    ~CryptoThreadScope() { OPENSSL_thread_stop(); }
};

}  // namespace

std::string Sha256OfFile(std::filesystem::path const& file) {
    CryptoThreadScope const scope;
    std::ifstream in(file, std::ios::binary);
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> const context(EVP_MD_CTX_new(),
                                                                          &EVP_MD_CTX_free);
    EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
    std::vector<char> buffer(1 << 20);
    do {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        EVP_DigestUpdate(context.get(), buffer.data(), static_cast<std::size_t>(in.gcount()));
    } while (in);
    if (!in.eof())
        throw Failure(
            FailureKind::Export,
            Text("$$$/Vistrel/quillohostkit/Export/CannotReadBack=Cannot read \"{file}\" back.",
                 {{"file", file.string()}}));

    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    EVP_DigestFinal_ex(context.get(), digest.data(), &size);
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        constexpr char const* kDigits = "0123456789abcdef";
        text += {kDigits[digest[i] >> 4], kDigits[digest[i] & 15]};
    }
    return text;
}

}  // namespace quillohostkit
