#include "ingest/call_row.h"

#include <string_view>

#include "base/text.h"
#include "ingest/call_error.h"

namespace ingest {

namespace {

std::size_t position(const jet::Recordset& calls, std::string_view column) {
  const auto& names = calls.fieldNames();
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (base::equalFoldAscii(names[i], column)) return i;
  }
  throw jet::Error(3265, "Item not found in this collection. (" + std::string(column) + ")");
}

}  // namespace

CallFields::CallFields(const jet::Recordset& calls)
    : DateTime(position(calls, "DateTime")),
      DialNumber(position(calls, "DialNumber")),
      Extension(position(calls, "Extension")),
      Trunk(position(calls, "Trunk")),
      TotalTime(position(calls, "TotalTime")),
      Pulses(position(calls, "Pulses")),
      AccountCode(position(calls, "AccountCode")),
      Redirected(position(calls, "Redirected")),
      Incoming(position(calls, "Incoming")),
      Ring(position(calls, "Ring")),
      CD(position(calls, "CD")),
      Hidden(position(calls, "Hidden")),
      Name(position(calls, "Name")),
      Price(position(calls, "Price")),
      Currency(position(calls, "Currency")),
      Price_Ref(position(calls, "Price_Ref")),
      Profile(position(calls, "Profile")),
      Provider(position(calls, "Provider")),
      Area(position(calls, "Area")),
      Country(position(calls, "Country")),
      Department(position(calls, "Department")),
      Owner(position(calls, "Owner")),
      Folder(position(calls, "Folder")) {}

CallRow::CallRow(jet::Recordset& calls, const CallFields& fields, Begin begin) : calls_(calls), fields_(fields) {
  if (begin == Begin::New) {
    calls_.addNew();
  } else {
    calls_.edit();
  }
}

CallRow::~CallRow() {
  if (!open_) return;
  try {
    calls_.cancelUpdate();
  } catch (const jet::Error&) {
    // The fault that unwinds this row is the one to report; the buffer goes with the next move in any case.
  }
}

void CallRow::set(std::size_t CallFields::*field, jet::Value value) {
  try {
    calls_.set(fields_.*field, std::move(value));
  } catch (const jet::Error& error) {
    constexpr int kNotConverted = 3421;
    constexpr int kTooLong = 3163;
    if (error.number() == kNotConverted || error.number() == kTooLong) throw UnfitValue(error);
    throw;
  }
}

void CallRow::write() {
  calls_.update();
  open_ = false;
}

}  // namespace ingest
