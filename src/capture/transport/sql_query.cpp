#include "capture/transport/sql_query.h"

#include <soci/soci.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "base/text.h"

namespace capture {

namespace {

std::string quoted(const std::string& value) {
  std::string text = "'";
  for (const char c : value) {
    if (c == '\'' || c == '\\') text += '\\';
    text += c;
  }
  return text + "'";
}

std::string connectionText(const SqlSettings& settings) {
  const bool mysql = settings.kind == "mysql";
  std::string text = "dbname=" + quoted(settings.database) + " user=" + quoted(settings.user);
  if (!settings.password.empty()) text += " password=" + quoted(settings.password);
  if (!settings.socket.empty()) {
    text += (mysql ? " unix_socket=" : " host=") + quoted(settings.socket);
  } else {
    text += " host=" + quoted(settings.host);
  }
  if (settings.port != 0) text += " port=" + std::to_string(settings.port);
  return text + (mysql ? " charset='utf8mb4'" : " connect_timeout=15 client_encoding=UTF8");
}

soci::session connect(const SqlSettings& settings) {
  try {
    return soci::session(settings.kind, connectionText(settings));
  } catch (const std::exception& error) {
    const std::string reason = error.what();
    if (reason.find("Failed to find shared library") != std::string::npos) {
      throw std::runtime_error("the client of " + settings.kind + " is not installed: apt install libsoci-" +
                               settings.kind + "4.0");
    }
    throw std::runtime_error("database " + settings.database + ": " + reason);
  }
}

std::string timeText(const std::tm& time) {
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &time);
  return text;
}

std::string numberText(double value) {
  if (value == std::floor(value) && std::abs(value) < 1e15) return std::to_string(static_cast<long long>(value));
  return std::to_string(value);
}

std::string textOf(const soci::row& row, std::size_t column) {
  if (row.get_indicator(column) == soci::i_null) return {};
  switch (row.get_properties(column).get_data_type()) {
    case soci::dt_date:
      return timeText(row.get<std::tm>(column));
    case soci::dt_double:
      return numberText(row.get<double>(column));
    case soci::dt_integer:
      return std::to_string(row.get<int>(column));
    case soci::dt_long_long:
      return std::to_string(row.get<long long>(column));
    case soci::dt_unsigned_long_long:
      return std::to_string(row.get<unsigned long long>(column));
    default:
      return row.get<std::string>(column);
  }
}

// Always in quotation marks, so that a value's blanks are told from the line's. A line is a row: line ends in values
// become blanks.
std::string csvField(std::string value) {
  std::ranges::replace_if(
      value, [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return '"' + base::replaceAll(std::move(value), "\"", "\"\"") + '"';
}

// The columns of the format come first in the row.
std::string lineOf(const soci::row& row, const SqlSettings& settings) {
  nlohmann::ordered_json object;
  std::string csv;
  for (std::size_t i = 0; i < settings.columns.size(); ++i) {
    const std::string value = textOf(row, i);
    if (settings.json) {
      object[row.get_properties(i).get_name()] = value;
    } else {
      csv += (i == 0 ? "" : ",") + csvField(value);
    }
  }
  return settings.json ? object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) : csv;
}

SqlRow rowOf(const soci::row& row, const SqlSettings& settings) {
  SqlRow result;
  result.line = lineOf(row, settings);
  std::size_t column = settings.columns.size();
  for (std::size_t i = 0; i < settings.id.size(); ++i) result.key += textOf(row, column++) + '|';
  result.time = base::DateTime::fromStored(textOf(row, column).substr(0, 19)).value_or(base::DateTime());
  return result;
}

std::string selectText(const SqlSettings& settings, base::DateTime since) {
  std::string columns;
  for (const std::string& column : settings.columns) columns += column + ", ";
  for (const std::string& column : settings.id) columns += column + ", ";
  return "SELECT " + columns + settings.time + " FROM " + settings.table + " WHERE " + settings.time + " >= '" +
         since.stored() + "' ORDER BY " + settings.time;
}

}  // namespace

std::vector<SqlRow> queryRows(const SqlSettings& settings, base::DateTime since,
                              const std::function<bool(const SqlRow&)>& isSeen) {
  soci::session session = connect(settings);
  const soci::rowset<soci::row> rows = session.prepare << selectText(settings, since);
  std::vector<SqlRow> found;
  for (const soci::row& row : rows) {
    SqlRow next = rowOf(row, settings);
    if (!isSeen(next)) found.push_back(std::move(next));
  }
  return found;
}

base::DateTime newestRow(const SqlSettings& settings) {
  soci::session session = connect(settings);
  soci::row row;
  session << "SELECT max(" + settings.time + ") FROM " + settings.table, soci::into(row);
  if (!session.got_data()) return {};
  return base::DateTime::fromStored(textOf(row, 0).substr(0, 19)).value_or(base::DateTime());
}

}  // namespace capture
