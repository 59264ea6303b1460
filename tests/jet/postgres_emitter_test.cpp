// SQL for a server, without one: every function has a form there, and conditions have the forms that its indexes serve.

#include "jet/postgres/statement_emitter.h"

#include <gtest/gtest.h>

#include "jet/bind/statement_binder.h"
#include "jet/engine/site_values.h"

namespace jet::postgres {

namespace {

std::string sqlOf(const std::string& text, const std::vector<engine::SiteValue>& sites = {},
                  const Masks* masks = nullptr) {
  static const auto table =
      std::make_shared<const TableDef>(TableDef{.name = "V",
                                                .fields = {{.name = "id", .type = Type::Long, .autoIncrement = true},
                                                           {.name = "t", .type = Type::Text},
                                                           {.name = "u", .type = Type::Text},
                                                           {.name = "n", .type = Type::Long},
                                                           {.name = "d", .type = Type::DateTime}},
                                                .indexes = {{.fields = {"t"}}}});
  const auto statement = parseStatement(text);
  const bind::BoundQuery query = bind::bindStatement(
      *statement, nullptr, [](std::string_view) { return table; }, text, masks);
  std::vector<engine::SiteValue> all = sites;
  all.resize(query.sites.size());
  return emitQuery({.query = &query, .sites = all, .text = text}).sql;
}

std::string sumsOf(int functions) {
  const auto table = std::make_shared<const TableDef>(TableDef{
      .name = "V",
      .fields = {{.name = "id", .type = Type::Long, .autoIncrement = true}, {.name = "n", .type = Type::Long}}});
  const std::string text = "select n, sum(n) from V group by n";
  const bind::BoundQuery query = bind::bindStatement(
      *parseStatement(text), nullptr, [&](std::string_view) { return table; }, text, nullptr);
  return emitQuery({.role = engine::Role::Sums, .query = &query, .sites = {}, .text = text}, functions).sql;
}

engine::SiteValue plain() {
  return {engine::SiteClass::Plain, {}, {}};
}

}  // namespace

TEST(PostgresEmitter, HasAFormOfEveryFunction) {
  for (const Function& function : functions()) {
    for (int count = function.minArguments; count <= function.maxArguments; ++count) {
      for (const char* argument : {"t", "n", "d"}) {
        std::string text = "select " + std::string(function.name) + "(";
        for (int i = 0; i < count; ++i) text += (i == 0 ? "" : ", ") + std::string(argument);
        EXPECT_NO_THROW(sqlOf(text + ") from V")) << text;
      }
    }
  }
  for (const Function& function : maskFunctions()) {
    const Masks masks({{.table = "V", .column = "t", .function = &function, .second = 3}});
    EXPECT_NO_THROW(sqlOf("select t from V", {}, &masks)) << function.name;
  }
}

TEST(PostgresEmitter, AServerWithFunctionsOfBeforeAddsUpByItsOwn) {
  EXPECT_NE(sumsOf(kFunctionVersion).find("jet.total("), std::string::npos);
  EXPECT_EQ(sumsOf(kLeastFunctionVersion).find("jet.total("), std::string::npos);
  EXPECT_NE(sumsOf(kLeastFunctionVersion).find("::bigint"), std::string::npos);
}

TEST(PostgresEmitter, ConditionsAreOfTheFormsThatIndexesServe) {
  struct Case {
    std::string where;
    engine::SiteValue site;
    std::string sql;
  };
  const Case cases[] = {
      {"t = 'Ana'", plain(), R"((lower("V"."t") = lower($1::text COLLATE "C")))"},
      {"u = 'Ana'", plain(), R"(("V"."u" LIKE $2::text AND lower("V"."u") = lower($1::text COLLATE "C")))"},
      {"t in ('a', 'b')", plain(), R"((lower("V"."t") IN (lower($1::text COLLATE "C"), lower($2::text COLLATE "C"))))"},
      {"t like 'a*'", engine::classifyPattern("a*"),
       R"((lower("V"."t") >= lower($1::text COLLATE "C") AND lower("V"."t") < lower($2::text COLLATE "C")))"},
      {"n = 7", {}, R"(("V"."n" = $1::bigint))"},
      {"n between 7 and 9", {}, R"((("V"."n" >= $1::bigint) AND ("V"."n" <= $2::bigint)))"},
      {"d >= #1/2/2025#", {}, R"(("V"."d" >= $1::timestamp))"},
      {"d < '2025-01-02'", {}, R"(("V"."d" < $1::timestamp))"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(sqlOf("select id from V where " + each.where, {each.site}),
              R"(SELECT "V"."id" FROM "V" AS "V" WHERE )" + each.sql + R"( ORDER BY "V"."id")");
  }
  EXPECT_NE(
      sqlOf("select id from V order by t desc").find(R"(ORDER BY jet.letters("V"."t") DESC NULLS LAST, "V"."id")"),
      std::string::npos);
}

}  // namespace jet::postgres
