#include "capture/site/transport_keys.h"

#include <algorithm>
#include <asio/ip/address.hpp>

#include "base/text.h"
#include "capture/transport/peers.h"
#include "capture/transport/sql_preset.h"
#include "platform/regular_file.h"

namespace capture {

namespace {

constexpr std::int64_t kLastPort = 65535;
constexpr std::int64_t kDay = 86400;

std::uint16_t portOf(Section& keys) {
  return static_cast<std::uint16_t>(keys.neededNumber("port", 1, kLastPort));
}

std::string addressOf(Section& keys, const std::string& absent) {
  std::string address = keys.text("address", absent);
  asio::error_code fault;
  asio::ip::make_address(address, fault);
  if (fault) keys.fail("address", "must be an address of this machine, as 192.0.2.1 or 0.0.0.0 for all");
  return address;
}

AllowedPeers peersOf(Section& keys) {
  AllowedPeers peers = keys.texts("allow");
  const std::string fault = faultOf(peers);
  if (!fault.empty()) keys.fail("allow", ": " + fault);
  return peers;
}

// A password is in the file, or in a file of its own that fewer people may read.
std::string secretOf(Section& keys, const char* key) {
  const std::string fileKey = std::string(key) + "_file";
  const std::string file = keys.text(fileKey.c_str());
  if (file.empty()) return keys.text(key);
  const auto content = platform::readRegularFile(file);
  if (!content || content->empty()) keys.fail(fileKey, "cannot be read: " + file);
  return std::string(base::trim(std::string_view(*content).substr(0, content->find('\n'))));
}

// "9600 8N1"
void readLine(Section& keys, SerialSettings& serial) {
  const std::string line = keys.text("line", "9600 8N1");
  const auto words = base::split(line, " ");
  const bool form = words.size() == 2 && words[1].size() == 3 &&
                    words[0].find_first_not_of("0123456789") == std::string::npos && words[0].size() < 8;
  if (!form) keys.fail("line", "must be speed, data bits, parity and stop bits, as \"9600 8N1\" or \"1200 7E1\"");
  serial.baud = static_cast<unsigned>(std::stoul(words[0]));
  serial.dataBits = static_cast<unsigned>(words[1][0] - '0');
  serial.parity = base::foldAscii(words[1].substr(1, 1)) == "n"   ? 'N'
                  : base::foldAscii(words[1].substr(1, 1)) == "e" ? 'E'
                                                                  : 'O';
  serial.stopBits = static_cast<unsigned>(words[1][2] - '0');
  const bool parityKnown = std::string_view("NEOneo").find(words[1][1]) != std::string_view::npos;
  if (serial.dataBits < 5 || serial.dataBits > 8 || !parityKnown || serial.stopBits < 1 || serial.stopBits > 2) {
    keys.fail("line", "must have 5 to 8 data bits, parity N, E or O, and 1 or 2 stop bits");
  }
}

SerialSettings readSerial(Section& keys) {
  SerialSettings serial;
  serial.device = keys.neededText("device");
  readLine(keys, serial);
  const std::string flow = keys.text("flow", "none");
  if (flow == "rtscts") {
    serial.flow = SerialFlow::RtsCts;
  } else if (flow == "xonxoff") {
    serial.flow = SerialFlow::XonXoff;
  } else if (flow != "none") {
    keys.fail("flow", "must be \"none\", \"rtscts\" or \"xonxoff\"");
  }
  return serial;
}

ListenSettings readListen(Section& keys) {
  return {addressOf(keys, "0.0.0.0"), portOf(keys), peersOf(keys)};
}

ConnectSettings readConnect(Section& keys) {
  ConnectSettings connect{keys.neededText("host"), portOf(keys), {}};
  for (Section& step : keys.tables("login")) {
    connect.login.push_back({step.text("expect"), step.text("send")});
    step.refuseUnread();
  }
  return connect;
}

Mitel5000Settings readMitel5000(Section& keys) {
  Mitel5000Settings mitel;
  mitel.host = keys.neededText("host");
  mitel.port = static_cast<std::uint16_t>(keys.number("port", mitel.port, 1, kLastPort));
  mitel.password = secretOf(keys, "password");
  const auto isAscii = [](unsigned char c) { return c > 0 && c < 128; };
  if (mitel.password.size() > kLongestMitelPassword ||
      !std::all_of(mitel.password.begin(), mitel.password.end(), isAscii)) {
    keys.fail("password", "must be " + std::to_string(kLongestMitelPassword) + " characters at most, without accents");
  }
  return mitel;
}

UdpSettings readUdp(Section& keys) {
  return {addressOf(keys, "0.0.0.0"), portOf(keys), peersOf(keys)};
}

FileSettings readFile(Section& keys) {
  FileSettings file{keys.neededText("path"), false};
  const std::string from = keys.text("from", "start");
  if (from != "start" && from != "end") keys.fail("from", "must be \"start\" or \"end\"");
  file.fromEnd = from == "end";
  return file;
}

FolderSettings readFolder(Section& keys) {
  FolderSettings folder;
  folder.path = keys.neededText("path");
  folder.pattern = keys.text("pattern", "*");
  folder.settle = static_cast<unsigned>(keys.number("settle", 2, 0, kDay));
  const std::string after = keys.text("after", "keep");
  if (after == "delete") {
    folder.after = AfterFile::Delete;
  } else if (after == "move") {
    folder.after = AfterFile::Move;
  } else if (after != "keep") {
    keys.fail("after", "must be \"keep\", \"delete\" or \"move\"");
  }
  return folder;
}

AmiSettings readAmi(Section& keys) {
  AmiSettings ami;
  ami.host = keys.text("host", ami.host);
  ami.port = static_cast<std::uint16_t>(keys.number("port", ami.port, 1, kLastPort));
  ami.user = keys.neededText("user");
  ami.secret = secretOf(keys, "secret");
  for (const std::string& value : {ami.user, ami.secret}) {
    if (value.find_first_of("\r\n") != std::string::npos) keys.fail("user", "and secret must be single lines");
  }
  return ami;
}

HttpSettings readHttp(Section& keys) {
  HttpSettings http;
  http.address = addressOf(keys, http.address);
  http.port = portOf(keys);
  http.path = keys.text("path", http.path);
  if (!http.path.starts_with('/')) keys.fail("path", "must begin with a slash");
  http.token = secretOf(keys, "token");
  http.certificate = keys.text("certificate");
  http.key = keys.text("key");
  if (http.certificate.empty() != http.key.empty()) keys.fail("certificate", "and \"key\" belong together");
  if (!asio::ip::make_address(http.address).is_loopback()) {
    if (http.certificate.empty()) {
      keys.fail("address", "is reached from other machines: give \"certificate\" and \"key\", or listen on 127.0.0.1");
    }
    if (http.token.empty()) keys.fail("address", "is reached from other machines: give a \"token\"");
  }
  return http;
}

GetSettings readGet(Section& keys) {
  GetSettings get;
  get.url = keys.neededText("url");
  if (!get.url.starts_with("http://") && !get.url.starts_with("https://")) {
    keys.fail("url", "must begin with http:// or https://");
  }
  get.timeFormat = keys.text("time_format", get.timeFormat);
  get.user = keys.text("user");
  get.password = secretOf(keys, "password");
  get.authority = keys.text("authority");
  get.acceptAnyCertificate = keys.yes("accept_any_certificate", false);
  get.id = keys.texts("id");
  get.every = static_cast<unsigned>(keys.number("every", get.every, 1, kDay));
  get.overlap = static_cast<unsigned>(keys.number("overlap", get.overlap, 0, 31 * kDay));
  return get;
}

SqlSettings readSql(Section& keys) {
  SqlSettings sql;
  const std::string preset = keys.text("preset");
  if (!preset.empty() && !applySqlPreset(sql, preset)) keys.fail("preset", "must be \"freepbx\" (or be left out)");
  sql.kind = keys.neededText("kind");
  if (sql.kind != "mysql" && sql.kind != "postgresql") keys.fail("kind", "must be \"mysql\" or \"postgresql\"");
  sql.host = keys.text("host", "127.0.0.1");
  sql.port = static_cast<std::uint16_t>(keys.number("port", 0, 0, kLastPort));
  sql.socket = keys.text("socket");
  sql.user = keys.neededText("user");
  sql.password = secretOf(keys, "password");
  sql.database = keys.neededText("database");
  sql.table = keys.text("table", sql.table);
  sql.time = keys.text("time", sql.time);
  if (keys.has("id")) sql.id = keys.texts("id");
  if (keys.has("columns")) sql.columns = keys.texts("columns");
  sql.json = keys.yes("json", false);
  sql.every = static_cast<unsigned>(keys.number("every", sql.every, 1, kDay));
  sql.overlap = static_cast<unsigned>(keys.number("overlap", sql.overlap, 0, 31 * kDay));
  if (sql.table.empty() || sql.time.empty() || sql.id.empty() || sql.columns.empty()) {
    keys.fail({}, "\"table\", \"time\", \"id\" and \"columns\" are needed, or a \"preset\"");
  }
  return sql;
}

struct Kind {
  const char* key;
  TransportSettings (*read)(Section& keys);
};

template <auto Read>
TransportSettings readAs(Section& keys) {
  return Read(keys);
}

constexpr Kind kKinds[] = {
    {"serial", readAs<readSerial>},   {"listen", readAs<readListen>},
    {"connect", readAs<readConnect>}, {"mitel5000", readAs<readMitel5000>},
    {"udp", readAs<readUdp>},         {"file", readAs<readFile>},
    {"folder", readAs<readFolder>},   {"ami", readAs<readAmi>},
    {"http", readAs<readHttp>},       {"get", readAs<readGet>},
    {"sql", readAs<readSql>},
};

}  // namespace

TransportSettings readTransport(Section& source) {
  const Kind* found = nullptr;
  std::string all;
  for (const Kind& kind : kKinds) {
    all += (all.empty() ? "" : ", ") + std::string(kind.key);
    if (!source.has(kind.key)) continue;
    if (found != nullptr) source.fail(kind.key, "is a second way for the lines to arrive; a source has one");
    found = &kind;
  }
  if (found == nullptr) source.fail({}, "it does not say how its lines arrive: one of " + all);
  Section keys = source.table(found->key);
  TransportSettings settings = found->read(keys);
  keys.refuseUnread();
  return settings;
}

}  // namespace capture
