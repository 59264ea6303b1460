#include "capture/transport/peers.h"

#include <algorithm>
#include <asio/ip/network_v4.hpp>
#include <asio/ip/network_v6.hpp>

namespace capture {

namespace {

// An IPv4 peer of a socket that takes both kinds looks like ::ffff:192.0.2.10.
asio::ip::address plain(const asio::ip::address& address) {
  if (address.is_v6() && address.to_v6().is_v4_mapped()) {
    return asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6());
  }
  return address;
}

bool fits(const asio::ip::address& peer, const std::string& entry) {
  asio::error_code fault;
  if (entry.find('/') == std::string::npos) return plain(asio::ip::make_address(entry, fault)) == peer && !fault;
  if (peer.is_v4()) {
    const auto network = asio::ip::make_network_v4(entry, fault);
    return !fault && network.canonical() == asio::ip::network_v4(peer.to_v4(), network.prefix_length()).canonical();
  }
  const auto network = asio::ip::make_network_v6(entry, fault);
  return !fault && network.canonical() == asio::ip::network_v6(peer.to_v6(), network.prefix_length()).canonical();
}

bool isEntry(const std::string& entry) {
  asio::error_code fault;
  asio::ip::make_address(entry, fault);
  if (!fault) return true;
  asio::ip::make_network_v4(entry, fault);
  if (!fault) return true;
  asio::ip::make_network_v6(entry, fault);
  return !fault;
}

}  // namespace

bool isAllowed(const asio::ip::address& peer, const AllowedPeers& allowed) {
  const asio::ip::address address = plain(peer);
  return allowed.empty() ||
         std::any_of(allowed.begin(), allowed.end(), [&](const std::string& entry) { return fits(address, entry); });
}

std::string faultOf(const AllowedPeers& allowed) {
  for (const std::string& entry : allowed) {
    if (!isEntry(entry)) return "'" + entry + "' is no address (192.0.2.10) and no network (10.0.0.0/24)";
  }
  return {};
}

}  // namespace capture
