#include "capture/format/call_json.h"

#include <nlohmann/json.hpp>

namespace capture {

namespace {

nlohmann::ordered_json callJson(const Call& call) {
  nlohmann::ordered_json json;
  json["type"] = toText(call.direction);
  json["start"] = call.start.stored();
  json["extension"] = call.extension;
  json["trunk"] = call.trunk;
  json["number"] = call.number;
  json["duration"] = call.durationSeconds;
  json["ring"] = call.ringSeconds;
  json["account"] = call.account;
  json["redirected"] = call.redirected;
  json["cd"] = call.cd;
  json["pulses"] = call.pulses;
  return json;
}

}  // namespace

std::string lineJson(const LineResult& result, bool reasons) {
  nlohmann::ordered_json json;
  json["line"] = result.position;
  json["outcome"] = toText(result.outcome);
  if (result.outcome == Outcome::Record) {
    auto& records = json["records"] = nlohmann::ordered_json::array();
    for (const Call& call : result.records) records.push_back(callJson(call));
  } else if (reasons && !result.reason.empty()) {
    json["reason"] = result.reason;
  }
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace capture
