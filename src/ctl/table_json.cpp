#include <nlohmann/json.hpp>
#include <ostream>

#include "base/text.h"
#include "ctl/table.h"

namespace ctl {

void Table::printJson(std::ostream& out) const {
  auto list = nlohmann::ordered_json::array();
  for (const auto& row : rows_) {
    nlohmann::ordered_json object;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string name = base::replaceAll(base::foldAscii(columns_[i]), " ", "_");
      std::visit([&](const auto& value) { object[name] = value; }, row[i]);
    }
    list.push_back(std::move(object));
  }
  // Bytes that are no UTF-8 (a record read in the wrong code page) must not end the command.
  out << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace ctl
