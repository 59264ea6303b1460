#pragma once

#include "capture/transport/transport.h"

namespace capture {

// One maker a kind of transport; makeTransport() picks. Each is in a file of its name.
using SinkPointer = std::shared_ptr<LineSink>;
using TransportPointer = std::shared_ptr<Transport>;

TransportPointer makeSerial(const SerialSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeTcpListen(const ListenSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeTcpConnect(const ConnectSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeMitel5000(const Mitel5000Settings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeUdp(const UdpSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeFileFollower(const FileSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeFolderWatcher(const FolderSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeAmi(const AmiSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeHttpPost(const HttpSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeHttpGet(const GetSettings& settings, asio::io_context& context, SinkPointer sink);
TransportPointer makeSqlPoll(const SqlSettings& settings, asio::io_context& context, SinkPointer sink);

}  // namespace capture
