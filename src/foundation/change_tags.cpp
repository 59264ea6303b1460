#include "foundation/change_tags.h"

namespace foundation {

void ChangeTags::LoadTouch(jet::Database& database) {
  CloseTouch();
  auto recordset = database.openRecordset("SELECT * FROM Touch");
  tableVersion_ = database.tableVersion("Touch");
  for (; !recordset->eof(); recordset->moveNext()) {
    const auto value = static_cast<std::int32_t>(recordset->get("Value").toLong());
    SeenTags_[recordset->get("Tag").toText()] = {true, value, value, true};
  }
  TouchRecordset_ = std::move(recordset);
  database_ = &database;
}

void ChangeTags::CloseTouch() {
  TouchRecordset_.reset();
  database_ = nullptr;
  SeenTags_.clear();
}

bool ChangeTags::IsTouched(std::string_view name) {
  Tag& tag = look(name);
  if (!tag.present) {
    reportInvalid();
    return true;
  }
  if (tag.value == tag.seen.value_or(0)) return false;
  tag.seen = tag.value;
  return true;
}

void ChangeTags::Touch(std::string_view name) {
  bump(name, true);
}

void ChangeTags::TouchCalls() {
  bump("Calls", false);
}

ChangeTags::Tag& ChangeTags::find(std::string_view name) {
  auto found = SeenTags_.find(name);
  if (found == SeenTags_.end()) found = SeenTags_.try_emplace(std::string(name)).first;
  return found->second;
}

ChangeTags::Tag& ChangeTags::look(std::string_view name) {
  Tag& tag = find(name);
  if (database_ == nullptr) return tag;
  const std::uint64_t version = database_->tableVersion("Touch");
  if (version != tableVersion_) {
    for (auto& [other, entry] : SeenTags_) entry.current = false;
    tableVersion_ = version;
  }
  if (tag.current) return tag;
  TouchRecordset_->findFirst("Tag = \"" + std::string(name) + "\"");
  tag.present = !TouchRecordset_->noMatch();
  if (tag.present) tag.value = static_cast<std::int32_t>(TouchRecordset_->get("Value").toLong());
  tag.current = true;
  return tag;
}

void ChangeTags::bump(std::string_view name, bool markSeen) {
  if (database_ == nullptr) return;
  // Read and written within one transaction, so that two copies' increments cannot fall together.
  jet::Transaction transaction(*database_);
  TouchRecordset_->findFirst("Tag = \"" + std::string(name) + "\"");
  if (TouchRecordset_->noMatch()) {
    transaction.commit();
    reportInvalid();
    return;
  }
  TouchRecordset_->edit();
  // Wraps as 32-bit counters do.
  const auto next = static_cast<std::int32_t>(static_cast<std::uint32_t>(TouchRecordset_->get("Value").toLong()) + 1U);
  TouchRecordset_->set("Value", next);
  TouchRecordset_->update();
  transaction.commit();
  Tag& tag = find(name);
  tag.present = true;
  tag.value = next;
  if (markSeen) tag.seen = next;
}

void ChangeTags::reportInvalid() {
  person_.messageBox("Non-fatal: Invalid touch tag.");
}

}  // namespace foundation
