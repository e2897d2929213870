#include "service/http/Address.h"

#include <boost/asio/ip/address.hpp>

namespace quilloservice::http {

std::optional<std::string> ParseAddress(std::string const& text) {
    namespace ip = boost::asio::ip;
    boost::system::error_code failed;
    ip::address const address = ip::make_address(text, failed);
    if (failed) return std::nullopt;
    if (!address.is_v6() || !address.to_v6().is_v4_mapped()) return address.to_string();
    return ip::make_address_v4(ip::v4_mapped, address.to_v6()).to_string();
}

}  // namespace quilloservice::http
