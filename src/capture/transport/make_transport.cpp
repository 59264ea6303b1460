#include <array>

#include "capture/transport/kinds.h"

namespace capture {

namespace {

struct Maker {
  asio::io_context& context;
  SinkPointer sink;

  TransportPointer operator()(const SerialSettings& settings) const { return makeSerial(settings, context, sink); }
  TransportPointer operator()(const ListenSettings& settings) const { return makeTcpListen(settings, context, sink); }
  TransportPointer operator()(const ConnectSettings& settings) const { return makeTcpConnect(settings, context, sink); }
  TransportPointer operator()(const Mitel5000Settings& settings) const {
    return makeMitel5000(settings, context, sink);
  }
  TransportPointer operator()(const UdpSettings& settings) const { return makeUdp(settings, context, sink); }
  TransportPointer operator()(const FileSettings& settings) const { return makeFileFollower(settings, context, sink); }
  TransportPointer operator()(const FolderSettings& settings) const {
    return makeFolderWatcher(settings, context, sink);
  }
  TransportPointer operator()(const AmiSettings& settings) const { return makeAmi(settings, context, sink); }
  TransportPointer operator()(const HttpSettings& settings) const { return makeHttpPost(settings, context, sink); }
  TransportPointer operator()(const GetSettings& settings) const { return makeHttpGet(settings, context, sink); }
  TransportPointer operator()(const SqlSettings& settings) const { return makeSqlPoll(settings, context, sink); }
};

// In the order of the variant.
constexpr std::array<const char*, std::variant_size_v<TransportSettings>> kNames = {
    "serial", "listen", "connect", "mitel5000", "udp", "file", "folder", "ami", "http", "get", "sql"};

}  // namespace

const char* transportName(const TransportSettings& settings) {
  return kNames[settings.index()];
}

std::shared_ptr<Transport> makeTransport(const TransportSettings& settings, asio::io_context& context,
                                         std::shared_ptr<LineSink> sink) {
  return std::visit(Maker{context, std::move(sink)}, settings);
}

}  // namespace capture
