#include "library/JsonText.h"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

template <class T>
nlohmann::json written(const T& content) {
  emeg::JsonText json;
  json.value(content);
  return nlohmann::json::parse(json.text());
}

} // namespace

TEST(JsonText, SeparatesMembersAndElements) {
  emeg::JsonText json;
  json.openObject();
  json.member("a", int64_t{1});
  json.key("b");
  json.openArray();
  json.value(true);
  json.null();
  json.openObject();
  json.closeObject();
  json.closeArray();
  json.member("c", "x");
  json.closeObject();
  EXPECT_EQ(json.text(), R"({"a":1,"b":[true,null,{}],"c":"x"})");
}

TEST(JsonText, NumbersComeBackToTheLastBit) {
  for (const double number : {0.1, -1e-300, 1e308, 5e-324, 123456789.125})
    EXPECT_EQ(written(number).get<double>(), number);
}

TEST(JsonText, NumbersThatAreNotFiniteAreNull) {
  EXPECT_TRUE(written(std::numeric_limits<double>::quiet_NaN()).is_null());
  EXPECT_TRUE(written(-std::numeric_limits<double>::infinity()).is_null());
}

TEST(JsonText, TextsComeBackWhateverIsInThem) {
  for (const std::string text : {"", "\"\\/\n\t\x01", "µV Ω 漢 😀", "</script>"})
    EXPECT_EQ(written(std::string_view(text)).get<std::string>(), text);
}

TEST(JsonText, BytesThatAreNoUtf8BecomeReplacementCharacters) {
  // A Latin-1 letter, a stray continuation, an overlong form, a surrogate, a character that is cut off.
  EXPECT_EQ(written(std::string_view("\xb5V")).get<std::string>(), "\xef\xbf\xbdV");
  for (const char* const bytes : {"\x80", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe6\xbc", "\xff"})
    EXPECT_NO_THROW(written(std::string_view(bytes))) << bytes;
}
