#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/table_def.h"

namespace jet::postgres {

// What a schema holds beside the tables. Every change of a table, by this program or another, passes through its
// triggers: they let one writer at a time in, note the change and tell the other connections.

// "jet changes": for each table the transaction that changed it last (`changed`), and the last one that did more than
// to add rows after all others (`rewritten`). The row of no name is that of the definitions.
inline constexpr const char* kChangesTable = "jet changes";
// "jet blocks": for each table the number of rows in each range of 2^kBlockBits keys that has some, and the greatest
// key that ever was in it (`last`).
inline constexpr const char* kBlocksTable = "jet blocks";
inline constexpr int kBlockBits = 11;

// "jet ladders": rows far apart in an order of a table (`what`, the select that finds them), for jumps (ladders.h):
// their keys and positions among the keys up to `last`, after the changes `rewritten` and `seen`. Passed over when the
// table is missing or cannot be written.
inline constexpr const char* kLaddersTable = "jet ladders";
// "jet orders": for each table and field that leads an index, the last transaction that changed this column of rows
// that were there (`moved`). The row of no field is that of whatever else moves rows in every order and is not told by
// the keys or by what was taken away.
inline constexpr const char* kOrdersTable = "jet orders";
// "jet removed TABLE": the fields of "jet orders" of rows that were taken away lately, and by which transaction.
std::string removedTable(const TableDef& table);
inline constexpr const char* kRemovedBy = "jet removed";
// More rows than these, all in all, are not kept: they have moved the others.
inline constexpr int kMostRemoved = 2000;

// Names that begin like this are no tables of the program.
inline constexpr const char* kOwnPrefix = "jet ";

// Kept as the comment of each table: a table with another one gets its indexes and triggers again.
inline constexpr const char* kTableVersion = "jet 1";

// The key of the advisory lock that writers of a schema hold to the end of their transaction.
std::int64_t writersLock(std::string_view schema);
// Of LISTEN and NOTIFY.
std::string channel(std::string_view schema);

// Makes the schema and its own tables. Error of the server when it exists.
std::vector<std::string> schemaStatements(const std::string& schema);
// Fits what was made under another name of the schema to this one; the tables' own statements follow.
std::vector<std::string> renamedStatements(const std::string& schema);
// The comment of a schema that has all of this, and whose functions know its name: it ends with that.
std::string schemaComment(const std::string& schema);
// The last change, as a number, after which places in the order of a field hold no more, those added or taken away told
// apart; without a field, the last change that was more than rows added after all others. An expression.
std::string lastMove(const TableDef& table, std::string_view field);
// The last change of a table, in the same way.
std::string lastChange(const TableDef& table);

// Makes a table.
std::vector<std::string> tableStatements(const std::string& schema, const TableDef& table);
// Makes its indexes and triggers, where they are missing.
std::vector<std::string> tableUpkeepStatements(const std::string& schema, const TableDef& table);
// Makes what the orders of its indexes need besides.
std::vector<std::string> orderStatements(const std::string& schema, const TableDef& table);
// Makes an index that is for order alone, where it is missing.
std::string orderIndexStatement(const std::string& schema, const TableDef& table, const IndexDef& index,
                                bool besideOthers);
// A change of definitions, noted for the other connections.
std::vector<std::string> definitionsChangedStatements(const std::string& schema);

// The size of a text column, kept as its comment: a type with a limit would refuse bytes that are no characters, which
// count for none in the dialect. Nothing for other columns.
std::vector<std::string> sizeStatements(const std::string& schema, const std::string& table, const FieldDef& field);
inline constexpr const char* kSizePrefix = "size ";

// A column's declaration: name, type, and what it is filled with by itself.
std::string columnDeclaration(const FieldDef& field);
// The name of an index over these fields; none is longer than the server's limit.
std::string indexName(const TableDef& table, const std::vector<std::string>& fields);
// The same of an index that is for order alone.
std::string orderIndexName(const TableDef& table, const std::string& field);

}  // namespace jet::postgres
