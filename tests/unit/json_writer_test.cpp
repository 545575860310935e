#include "base/json_writer.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace std::string_literals;

TEST(JsonText, EscapesQuotesBackslashesAndControls) {
    EXPECT_EQ(JsonText(""), R"("")");
    EXPECT_EQ(JsonText("a\"b\\c/"), R"("a\"b\\c/")");
    EXPECT_EQ(JsonText("\b\f\n\r\t"), R"("\b\f\n\r\t")");
    EXPECT_EQ(JsonText("\x01\x1F\x7F"), "\"\\u0001\\u001f\x7F\"");
    EXPECT_EQ(JsonText("a\0b"s), R"("a\u0000b")");
    EXPECT_EQ(JsonText("\xC3\xA4\xFF"), "\"\xC3\xA4\xFF\"");
}

TEST(JsonWriter, SeparatesTheMembersOfObjectsAndArrays) {
    std::string text;
    JsonWriter json(text);
    json.BeginObject();
    json.BeginArrayField("empty");
    json.EndArray();
    json.BoolField("yes", true);
    json.BeginArrayField("values");
    json.Int(-1);
    json.Bool(false);
    json.BeginObject();
    json.EndObject();
    json.BeginArray();
    json.Text("a");
    json.PlainText("b");
    json.EndArray();
    json.Real(0.5);
    json.EndArray();
    json.IntField("last", 2);
    json.EndObject();
    EXPECT_EQ(text, R"({"empty":[],"yes":true,"values":[-1,false,{},["a","b"],0.5],"last":2})");
}

TEST(JsonWriter, EscapesTextAndLeavesPlainTextAsItIs) {
    std::string text;
    JsonWriter json(text);
    json.BeginObject();
    json.TextField("escaped", "\"\n");
    json.PlainTextField("plain", "\\");
    json.EndObject();
    EXPECT_EQ(text, R"({"escaped":"\"\n","plain":"\"})");
}

TEST(JsonWriter, WritesRealNumbersWithSixSignificantDigits) {
    std::string text;
    JsonWriter json(text);
    json.BeginArray();
    json.Real(1.23456789);
    json.Real(1234567);
    json.Real(0);
    json.Int(std::numeric_limits<int64_t>::min());
    json.EndArray();
    EXPECT_EQ(text, "[1.23457,1.23457e+06,0,-9223372036854775808]");
}

TEST(JsonWriter, AppendsToTheTextThatIsThere) {
    std::string text = "alert(";
    JsonWriter(text).Text("x");
    EXPECT_EQ(text, "alert(\"x\"");
}

}  // namespace
