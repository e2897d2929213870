#pragma once

#include <openssl/crypto.h>

namespace quillosdk {

/// Frees at its end what libcrypto keeps for the current thread, which is cheap to make again. For
/// work on threads of which nobody knows whether they end before libcrypto does.
class CryptoThreadScope {
public:
    CryptoThreadScope() = default;
    ~CryptoThreadScope() { OPENSSL_thread_stop(); }
    CryptoThreadScope(CryptoThreadScope const&) = delete;
    CryptoThreadScope& operator=(CryptoThreadScope const&) = delete;
};

}  // namespace quillosdk
