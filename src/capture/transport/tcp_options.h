#pragma once

#include <asio/ip/tcp.hpp>

#include "capture/transport/line_reading.h"

namespace capture {

// Lets the system find out within about two minutes that the other side is gone without a word (a cable, a power cut):
// exchanges are silent for hours, so a silence of the lines says nothing.
void noticeDeadPeers(asio::ip::tcp::socket& socket);

// Takes what has arrived on a connection that is about to be closed: the sender believes that we have it.
asio::awaitable<void> takeArrived(asio::ip::tcp::socket& socket, LineSink& sink, StreamReading& reading);

}  // namespace capture
