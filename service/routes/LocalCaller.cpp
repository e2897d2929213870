#include "service/routes/LocalCaller.h"

#include <string>

#include "service/routes/Call.h"

namespace quilloservice {

namespace {

bool IsLoopbackAddress(std::string const& address) {
    return address.starts_with("127.") || address == "::1";
}

/// Whether the header Host names this machine. It does not for a page of another site whose name
/// resolves to a loopback address (DNS rebinding).
bool NamesLoopback(std::string const& hostHeader) {
    std::string host = hostHeader.substr(
        0, hostHeader.starts_with('[') ? hostHeader.find(']') + 1 : hostHeader.find(':'));
    bool isAddress = host.find_first_not_of("0123456789.") == std::string::npos;
    return host == "localhost" || host == "[::1]" || (isAddress && host.starts_with("127."));
}

}  // namespace

bool IsLocalProgram(Call const& call) {
    return IsLoopbackAddress(call.request.remoteAddress) && !call.Header("Origin") &&
           NamesLoopback(call.request.host);
}

}  // namespace quilloservice
