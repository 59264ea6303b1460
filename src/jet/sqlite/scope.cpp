#include "jet/sqlite/scope.h"

#include "base/text.h"

namespace jet::sqlite {

Scope::Scope(const Source& source, Catalog& catalog, std::string_view statement, bool qualify) {
  add(source, catalog, statement, qualify);
}

void Scope::add(const Source& source, Catalog& catalog, std::string_view statement, bool qualify) {
  if (source.join != Source::Join::None) {
    add(*source.left, catalog, statement, qualify);
    add(*source.right, catalog, statement, qualify);
    return;
  }
  ScopeTable table;
  table.def = catalog.get(source.table, statement);
  table.name = source.table;
  table.alias = source.alias.empty() ? table.def->name : source.alias;
  if (qualify) table.qualifier = quotedName(table.alias) + '.';
  tables_.push_back(std::move(table));
}

Scope Scope::ofResult(const std::string& alias, const std::vector<std::string>& columns,
                      const std::vector<Type>& types) {
  auto def = std::make_shared<TableDef>();
  def->name = alias;
  for (std::size_t i = 0; i < columns.size(); ++i) def->fields.push_back({.name = columns[i], .type = types[i]});
  Scope scope;
  scope.tables_.push_back({quotedName(alias) + '.', alias, alias, std::move(def), true});
  return scope;
}

bool Scope::covers(const std::string& qualifier, const ScopeTable& table) {
  return qualifier.empty() || base::equalFoldAscii(qualifier, table.alias) ||
         base::equalFoldAscii(qualifier, table.name);
}

ResolvedColumn Scope::find(const std::string& qualifier, const std::string& name) const {
  for (const ScopeTable& table : tables_) {
    if (!covers(qualifier, table)) continue;
    if (const FieldDef* field = table.def->find(name)) return {&table, field};
  }
  return {};
}

}  // namespace jet::sqlite
