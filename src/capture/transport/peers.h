#pragma once

#include <asio/ip/address.hpp>

#include "capture/transport/settings.h"

namespace capture {

// Whether an address may send. An empty list allows everybody.
[[nodiscard]] bool isAllowed(const asio::ip::address& peer, const AllowedPeers& allowed);

// A text for the operator when an entry is neither an address nor a network; empty when all are.
[[nodiscard]] std::string faultOf(const AllowedPeers& allowed);

}  // namespace capture
