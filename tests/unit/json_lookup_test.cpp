#include "themes/base64.h"
#include "themes/json_lookup.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using Keys = std::vector<std::string>;

TEST(JsonLookup, ReadsEveryKindOfValue) {
    const std::string text =
        R"({"s":"a b","n":-1.5e3,"t":true,"f":false,"z":null,"o":{"k":[1,{}]},"a":[1, 2]})";
    EXPECT_EQ(JsonLookup(text, "s"), "a b");
    EXPECT_EQ(JsonLookup(text, "n"), "-1.5e3");
    EXPECT_EQ(JsonLookup(text, "t"), "true");
    EXPECT_EQ(JsonLookup(text, "f"), "false");
    EXPECT_EQ(JsonLookup(text, "z"), "null");
    EXPECT_EQ(JsonLookup(text, "o"), R"({"k":[1,{}]})");
    EXPECT_EQ(JsonLookup(text, "a"), "[1, 2]");
    EXPECT_EQ(JsonLookup(text, "missing"), "");
    EXPECT_EQ(JsonLookup("", "s"), "");
}

TEST(JsonLookup, SkipsCommasColonsAndWhiteSpaceAlike) {
    EXPECT_EQ(JsonLookup("{,:\"a\"\t,\r\n1 \"b\"2::\"c\" \"x\"}", "a"), "1");
    EXPECT_EQ(JsonLookup("{,:\"a\"\t,\r\n1 \"b\"2::\"c\" \"x\"}", "b"), "2");
    EXPECT_EQ(JsonLookup("{,:\"a\"\t,\r\n1 \"b\"2::\"c\" \"x\"}", "c"), "x");
}

TEST(JsonLookup, ALiteralEndsAtTheNextSeparatorOrBracket) {
    for (const char* after : {"\t", "\n", "\r", " ", ",", ":", "}", "]"}) {
        EXPECT_EQ(JsonLookup(std::string("{\"a\":2") + after, "a"), "2") << after;
    }
    EXPECT_EQ(JsonLookup(R"({"a":tr"{x,"b":1})", "a"), "tr\"{x");
    EXPECT_EQ(JsonLookup(R"({"a":tr"{x,"b":1})", "b"), "1");
    EXPECT_EQ(JsonLookup("{\"a\":2", "a"), "") << "without an end";
}

TEST(JsonLookup, AnyOtherByteEndsTheScan) {
    for (const char* bad : {"x", "+", "'", "/", "\v", "\x80", "\xEF\xBB\xBF"}) {
        const std::string text = std::string(R"({"a":1,)") + bad + R"("b":2})";
        EXPECT_EQ(JsonLookup(text, "a"), "1") << bad;
        EXPECT_EQ(JsonLookup(text, "b"), "") << bad;
    }
    EXPECT_EQ(JsonLookup(std::string("{\0\"a\":1}", 8), "a"), "");
    EXPECT_EQ(JsonLookup(R"(}{"a":1})", "a"), "");
}

TEST(JsonLookup, StringsHoldOnlyPrintableAsciiAndUtf8) {
    const auto value = [](const std::string& inside) {
        return JsonLookup("{\"a\":\"" + inside + "\"}", "a");
    };
    for (const char* good : {" ~", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        EXPECT_EQ(value(good), good);
    }
    for (const char* bad :
         {"\x01", "\t", "\n", "\x1F", "\x7F", "\x80", "\xC3", "\xC3x", "\xE2\x82", "\xE2\x82x",
          "\xF0\x9F\x98", "\xF8\x80\x80\x80\x80", "\xFF", "\\x", "\\v", "\\'"}) {
        EXPECT_EQ(value(bad), "") << bad;
        EXPECT_EQ(JsonLookup(std::string("{\"x\":\"") + bad + "\",\"a\":1}", "a"), "") << bad;
        EXPECT_EQ(JsonLookup(std::string("{\"x\":[\"") + bad + "\"],\"a\":1}", "a"), "") << bad;
    }
    EXPECT_EQ(JsonLookup(R"({"a":"open)", "a"), "");
    EXPECT_EQ(JsonLookup(R"({"a":"open\)", "a"), "");
}

TEST(JsonLookup, UnescapesStringValues) {
    EXPECT_EQ(JsonLookup(R"({"a":"\"\\\/\b\f\n\r\t"})", "a"), "\"\\/\b\f\n\r\t");
    EXPECT_EQ(JsonLookup(R"({"a":"x\u0041y","b":1})", "a"), "");
    EXPECT_EQ(JsonLookup(R"({"a":"x\u0041y","b":1})", "b"), "1") << "the string does not end the scan";
    EXPECT_EQ(JsonLookup(R"({"a":{"b":"\n"}})", "a"), R"({"b":"\n"})") << "nested text stays escaped";
}

TEST(JsonLookup, OnlyKeysDirectlyInsideTheOutermostObjectCount) {
    const std::string text = R"({"o":{"a":1},"l":["a",2],"x":"a","a":3})";
    EXPECT_EQ(JsonLookup(text, "a"), "3");
    EXPECT_EQ(JsonLookup(R"(["a",1,"b",{"a":2}])", "b"), R"({"a":2})");
    EXPECT_EQ(JsonLookup(R"("a" 1)", "a"), "");
    EXPECT_EQ(JsonLookup(R"({1:2,"a":3})", "a"), "3");
}

TEST(JsonLookup, AKeyMatchesByItsRawBytes) {
    EXPECT_EQ(JsonLookup(R"({"a\/b":1,"a/b":2})", "a/b"), "2");
    EXPECT_EQ(JsonLookup(R"({"a\/b":1,"a/b":2})", R"(a\/b)"), "1");
    EXPECT_EQ(JsonLookup(R"({"A":1,"aa":2,"":3})", "a"), "");
    EXPECT_EQ(JsonLookup(R"({"A":1,"aa":2,"":3})", ""), "3");
}

TEST(JsonLookup, TheFirstMatchWins) {
    EXPECT_EQ(JsonLookup(R"({"a":1,"a":2})", "a"), "1");
    EXPECT_EQ(JsonLookup(R"({"a":"","a":2})", "a"), "");
}

TEST(JsonLookup, DepthHasNoLimit) {
    const std::string nested = std::string(1000000, '[') + std::string(1000000, '}');
    EXPECT_EQ(JsonLookup("{\"x\":" + nested + ",\"a\":1}", "a"), "1");
    EXPECT_EQ(JsonLookup("{\"x\":" + nested + ",\"a\":1}", "x"), nested);
    EXPECT_EQ(JsonLookup("{\"x\":{\"a\":2", "x"), "");
}

TEST(JsonLookup, FindsManyFieldsAsSingleLookupsDo) {
    const std::string text = R"({"b":"x\ny","a":1,"b":2,"c":{"d":3},bad,"d":4})";
    JsonField fields[] = {{"a", {}, false}, {"b", {}, false}, {"c", {}, false}, {"d", {}, false}};
    FindJsonValues(text, fields, 4);
    for (const JsonField& field : fields) {
        std::string buffer;
        EXPECT_EQ(JsonContent(field.value, &buffer), JsonLookup(text, field.key)) << field.key;
    }
    EXPECT_TRUE(fields[2].found);
    EXPECT_FALSE(fields[3].found);
}

TEST(JsonKeys, AreListedInFileOrder) {
    EXPECT_EQ(ListJsonKeys(R"({"b":1,"a":"x,}\"","c":{"k":[",]"]},"a":[]})"), (Keys{"b", "a", "c", "a"}));
    EXPECT_EQ(ListJsonKeys(" x {\r\n\t, ,\"a\" junk : \t1 }, \"b\":2"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(""), Keys{});
    EXPECT_EQ(ListJsonKeys("[]"), Keys{});
    EXPECT_EQ(ListJsonKeys("{"), Keys{});
    EXPECT_EQ(ListJsonKeys("{}"), Keys{});
}

TEST(JsonKeys, EndWhereTheTextIsNotAnObject) {
    EXPECT_EQ(ListJsonKeys(R"({"a":1,b:2,"c":3})"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(R"({"a":1,"b)"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(R"({"a":1,"b\)"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(R"({"a")"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(R"({"a":)"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(R"({"a":"x\)"), (Keys{"a"}));
    EXPECT_EQ(ListJsonKeys(R"({"a":1 "b":2,"c":3})"), (Keys{"a", "c"})) << "a value ends at a comma";
}

TEST(JsonKeys, DropABackslash) {
    EXPECT_EQ(ListJsonKeys(R"({"a\"b":1,"\n\\c":2})"), (Keys{"a\"b", "n\\c"}));
}

TEST(Base64, StrictRuleRejectsIncompleteGroupsAndOtherCharacters) {
    for (const char* good : {"AAAA", "AA==", "AAA=", "+/az09AZ", "AB=="}) {
        EXPECT_TRUE(IsStrictBase64(good)) << good;
    }
    for (const char* bad : {"", "A", "AA", "AAA", "AAAAA", "A===", "AA=A",
                            "====", "AAAA====", "AA==AA==", "AA\nA", "AAA ", "AA-_", "AAA\xC3", "AAA\n"}) {
        EXPECT_FALSE(IsStrictBase64(bad)) << bad;
    }
}

TEST(Base64, DecodesUpToThePadding) {
    EXPECT_EQ(DecodeBase64(""), "");
    EXPECT_EQ(DecodeBase64("Zg=="), "f");
    EXPECT_EQ(DecodeBase64("Zm8="), "fo");
    EXPECT_EQ(DecodeBase64("Zm9vYmFy"), "foobar");
    EXPECT_EQ(DecodeBase64("AAECA/3+/w=="), std::string("\0\1\2\3\xFD\xFE\xFF", 7));
    EXPECT_EQ(DecodeBase64("Zm9v=\n*"), "foo") << "ignores everything after '='";
    EXPECT_EQ(DecodeBase64("Zm9vZg"), "foof");
    EXPECT_EQ(DecodeBase64("Zm9vZ"), "foo");
    EXPECT_EQ(DecodeBase64("Zm9v\nZm9v"), "");
    EXPECT_EQ(DecodeBase64("Zm9*"), "");
}

}  // namespace
