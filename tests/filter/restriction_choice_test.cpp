#include "filter/restriction_choice.h"

#include <gtest/gtest.h>

#include "filter/call_office.h"

namespace filter {
namespace {

TEST(RestrictionChoice, IsWrittenAndReadBack) {
  struct {
    RestrictionChoice choice;
    bool extensionIsText;
    const char* restriction;
  } const cases[] = {
      {{}, true, ""},
      {{.departments = {"Sales"}}, true, "Department='Sales'"},
      {{.departments = {"Sales", "Service"}}, true, "Department In('Sales','Service')"},
      {{.extensions = {"201", "202"}, .trunks = {"7"}}, true, "Extension In('201','202') Or Trunk='7'"},
      {{.extensions = {"201", "202"}, .trunks = {"7"}}, false, "Extension In(201,202) Or Trunk=7"},
      {{.departments = {"A"}, .extensions = {"1"}, .clients = {"Popescu & Fii"}, .trunks = {"2"}},
       true,
       "Department='A' Or Extension='1' Or Owner='Popescu & Fii' Or Trunk='2'"},
      {{.clients = {"D'Angelo \"SRL\""}}, true, "Owner='D''Angelo \"SRL\"'"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(restrictionFor(each.choice, each.extensionIsText), each.restriction);
    EXPECT_EQ(choiceOf(each.restriction), each.choice) << each.restriction;
  }
}

TEST(RestrictionChoice, IsReadFromConditionsTypedInTheSameSense) {
  EXPECT_EQ(choiceOf("(extension = '201' or DEPARTMENT = \"Sales\")"),
            (RestrictionChoice{.departments = {"Sales"}, .extensions = {"201"}}));
  for (const char* other :
       {"TotalTime > 60", "Extension='201' And Department='Sales'", "Not Extension='201'", "Extension Not In('201')",
        "Extension <> '201'", "Department='Sales' Or Hidden", "Extension = Trunk", "Department = 5",
        "'201' = Extension", "Extension='20", "Department = Null", "Calls.Extension='201'"}) {
    EXPECT_EQ(choiceOf(other), std::nullopt) << other;
  }
}

class RestrictionLimit : public ::testing::Test, protected CallOffice {
 protected:
  RestrictionLimit() {
    for (int i = 0; i < 30; ++i) {
      definitions.extensions.push_back({std::to_string(200 + i), "", i < 25 ? "Sales" : "Service"});
    }
  }
  static RestrictionChoice extensions(int first, int last) {
    RestrictionChoice choice;
    for (int i = first; i <= last; ++i) choice.extensions.push_back(std::to_string(i));
    return choice;
  }
};

TEST_F(RestrictionLimit, OffersTheDepartmentInPlaceOfItsExtensions) {
  EXPECT_EQ(limitText(extensions(200, 212), definitions, texts), "");
  const auto advice = [&](const RestrictionChoice& choice) {
    const std::string text = limitText(choice, definitions, texts);
    return text.substr(text.find(' ') + 1);
  };
  EXPECT_EQ(advice(extensions(200, 224)), "IDS_RESTRICTION_TAKE_DEPARTMENT");
  EXPECT_EQ(advice(extensions(200, 223)), "IDS_RESTRICTION_MAKE_DEPARTMENT");
  RestrictionChoice twice = extensions(200, 224);
  twice.departments = {"Sales"};
  EXPECT_EQ(advice(twice), "IDS_RESTRICTION_DEPARTMENT_HAS_THEM");
  EXPECT_EQ(advice({.departments = {std::string(130, 'x')}}), "IDS_RESTRICTION_CHOOSE_LESS");
  EXPECT_EQ(withDepartments(extensions(200, 225), definitions.extensions),
            (RestrictionChoice{.departments = {"Sales"}, .extensions = {"225"}}));
}

}  // namespace
}  // namespace filter
