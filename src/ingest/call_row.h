#pragma once

#include <cstddef>
#include <memory>

#include "jet/recordset.h"

namespace ingest {

// Positions of the columns of table `Calls` in a recordset over all of them: setting by position saves a look-up by
// name for each of the two dozen columns of every call.
struct CallFields {
  explicit CallFields(const jet::Recordset& calls);  // Error 3265 when a column is missing

  std::size_t DateTime, DialNumber, Extension, Trunk, TotalTime, Pulses, AccountCode, Redirected, Incoming, Ring, CD,
      Hidden, Name, Price, Currency, Price_Ref, Profile, Provider, Area, Country, Department, Owner, Folder;
};

// A row of `Calls` that addNew or edit began; dropped unless it is written.
class CallRow {
 public:
  enum class Begin { New, Edit };
  CallRow(jet::Recordset& calls, const CallFields& fields, Begin begin);
  CallRow(const CallRow&) = delete;
  CallRow& operator=(const CallRow&) = delete;
  ~CallRow();

  // UnfitValue when the column cannot hold it.
  void set(std::size_t CallFields::*field, jet::Value value);
  [[nodiscard]] jet::Value get(std::size_t CallFields::*field) { return calls_.get(fields_.*field); }
  void write();

 private:
  jet::Recordset& calls_;
  const CallFields& fields_;
  bool open_ = true;
};

}  // namespace ingest
