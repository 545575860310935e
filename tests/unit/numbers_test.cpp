#include "base/numbers.h"

#include "random_sample.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <sstream>
#include <string>

namespace {

using namespace std::string_literals;

std::optional<int32_t> Int(std::string_view text) {
    int32_t value = 0;
    return ParseInt(text, &value) ? std::optional(value) : std::nullopt;
}

std::optional<uint32_t> Unsigned(std::string_view text) {
    uint32_t value = 0;
    const bool read = ScanUnsignedLong(text.data(), text.data() + text.size(), &value) != nullptr;
    return read ? std::optional(value) : std::nullopt;
}

std::optional<double> Double(std::string_view text) {
    double value = 0;
    return ParseDouble(text, &value) ? std::optional(value) : std::nullopt;
}

std::optional<float> Float(std::string_view text) {
    float value = 0;
    return ParseFloat(text, &value) ? std::optional(value) : std::nullopt;
}

std::string Streamed(double value) {
    std::string text;
    AppendStreamDouble(text, value);
    return text;
}

std::string IostreamText(double value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

TEST(ParseInt, ReadsWhatStoiReads) {
    EXPECT_EQ(Int("12"), 12);
    EXPECT_EQ(Int("-12"), -12);
    EXPECT_EQ(Int("+12"), 12);
    EXPECT_EQ(Int(" \t\n\v\f\r12"), 12);
    EXPECT_EQ(Int("12abc"), 12);
    EXPECT_EQ(Int("12 34"), 12);
    EXPECT_EQ(Int("1.5"), 1);
    EXPECT_EQ(Int("1e5"), 1);
    EXPECT_EQ(Int("0x10"), 0);
    EXPECT_EQ(Int("010"), 10);
    EXPECT_EQ(Int("-0"), 0);
    EXPECT_EQ(Int(std::string(100, '0') + "5"), 5);
}

TEST(ParseInt, FailsWithoutALeadingNumber) {
    for (const char* text : {"", " ", "-", "+", "- 5", "--5", "+-5", "abc", "x1", ",1", ".5",
                             "\xA0"
                             "5"}) {
        EXPECT_EQ(Int(text), std::nullopt) << '"' << text << '"';
    }
    EXPECT_EQ(Int("\0005"s), std::nullopt);
}

TEST(ParseInt, FailsBeyondThirtyTwoBits) {
    EXPECT_EQ(Int("2147483647"), 2147483647);
    EXPECT_EQ(Int("2147483648"), std::nullopt);
    EXPECT_EQ(Int("-2147483648"), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(Int("-2147483649"), std::nullopt);
    EXPECT_EQ(Int("4294967297"), std::nullopt);
    EXPECT_EQ(Int("18446744073709551617"), std::nullopt);
    EXPECT_EQ(Int(std::string(5000, '9')), std::nullopt);
}

TEST(ParseInt, FailureLeavesTheValueUnchanged) {
    int32_t value = 77;
    EXPECT_FALSE(ParseInt("99999999999", &value));
    EXPECT_FALSE(ParseInt("x", &value));
    EXPECT_EQ(value, 77);
}

TEST(ScanUnsignedLong, NegatesModulo32BitsAsStoulDoes) {
    EXPECT_EQ(Unsigned("-1"), 4294967295U);
    EXPECT_EQ(Unsigned("-4294967295"), 1U);
    EXPECT_EQ(Unsigned("-4294967296"), std::nullopt);
    EXPECT_EQ(Unsigned("-0"), 0U);
    EXPECT_EQ(Unsigned("4294967295"), 4294967295U);
    EXPECT_EQ(Unsigned("4294967296"), std::nullopt);
    EXPECT_EQ(Unsigned(" +8rest"), 8U);
    EXPECT_EQ(Unsigned(""), std::nullopt);
    EXPECT_EQ(Unsigned("-"), std::nullopt);
    EXPECT_EQ(Unsigned("abc"), std::nullopt);
}

TEST(ParseDouble, ReadsWhatStodReads) {
    EXPECT_EQ(Double("0.5"), 0.5);
    EXPECT_EQ(Double(" \t+.5"), 0.5);
    EXPECT_EQ(Double("-5."), -5.0);
    EXPECT_EQ(Double("1.5abc"), 1.5);
    EXPECT_EQ(Double("1.5.5"), 1.5);
    EXPECT_EQ(Double("1e3"), 1000.0);
    EXPECT_EQ(Double("1E-3x"), 0.001);
    EXPECT_EQ(Double("1e"), 1.0);
    EXPECT_EQ(Double("1e+"), 1.0);
    EXPECT_EQ(Double("1e+x"), 1.0);
    EXPECT_EQ(Double("1.23457e+06"), 1234570.0);
    EXPECT_EQ(Double("0x"), 0.0);
    EXPECT_EQ(Double("0xg"), 0.0);
    EXPECT_EQ(Double("0x."), 0.0);
    EXPECT_EQ(Double("0x.8"), 0.5);
    EXPECT_EQ(Double("0X1.8p1"), 3.0);
    EXPECT_EQ(Double("0x1p"), 1.0);
    EXPECT_EQ(Double("-0xA"), -10.0);
    EXPECT_EQ(Double("0x0p99999"), 0.0);
    EXPECT_EQ(Double("INF"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Double("-infinityx"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(Double("infinit"), std::numeric_limits<double>::infinity());
    ASSERT_TRUE(Double("NaN(7)").has_value());
    EXPECT_TRUE(std::isnan(*Double("NaN(7)")));
    EXPECT_TRUE(std::signbit(*Double("-nan")));
    EXPECT_TRUE(std::signbit(*Double("-0")));
}

TEST(ParseDouble, FailsWithoutALeadingNumber) {
    for (const char* text : {"", " ", "-", ".", "-.", ".e5", "e5", "abc", "+-1", "in", "na", ",5"}) {
        EXPECT_EQ(Double(text), std::nullopt) << '"' << text << '"';
    }
}

TEST(ParseDouble, FailsIfTheValueOverflowsOrUnderflowsToZero) {
    EXPECT_EQ(Double("1e308"), 1e308);
    EXPECT_EQ(Double("1.7976931348623157e308"), std::numeric_limits<double>::max());
    for (const char* text :
         {"1.8e308", "-1e309", "1e400", "1e99999999999999999999", "1e-400", "-1e-400", "2e-324",
          "1e-99999999999999999999", "0x1p1024", "0x1p-1080", "0x1p99999999999"}) {
        EXPECT_EQ(Double(text), std::nullopt) << text;
    }
    EXPECT_EQ(Double("0e99999999999999999999"), 0.0);
    EXPECT_EQ(Double("0.000e-99999999999999999999"), 0.0);
    EXPECT_EQ(Double(std::string(400, '9')), std::nullopt);
    EXPECT_EQ(Double("0." + std::string(400, '0') + "1"), std::nullopt);
    EXPECT_EQ(Double("0." + std::string(200, '0') + "1e201"), 1.0);
    EXPECT_EQ(Double("1" + std::string(200, '0') + "e-200"), 1.0);
}

TEST(ParseDouble, ReadsSubnormalNumbers) {
    EXPECT_EQ(Double("1e-310"), 1e-310);
    EXPECT_EQ(Double("5e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(Double("0x1p-1074"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(Float("1e-40"), 1e-40F);
}

TEST(ParseFloat, ReadsWhatStofReads) {
    EXPECT_EQ(Float("3.0"), 3.0F);
    EXPECT_EQ(Float(" -.25e1x"), -2.5F);
    EXPECT_EQ(Float("16777217"), 16777216.0F);
    EXPECT_EQ(Float("3.5e38"), std::nullopt);
    EXPECT_EQ(Float("1e-50"), std::nullopt);
    EXPECT_EQ(Float("x"), std::nullopt);
    EXPECT_EQ(Float("inf"), std::numeric_limits<float>::infinity());
    EXPECT_EQ(Float("0x1.8p-1"), 0.75F);
    // Just above the middle of two floats: rounding to double first would round down.
    EXPECT_EQ(Float("1.00000005960464477539062500001"), std::nextafter(1.0F, 2.0F));
}

// The result of a library read: 'v' and the value, or the kind of failure.
template <typename Real> using Outcome = std::pair<char, Real>;

template <typename Real> Outcome<Real> LibraryOutcome(const std::string& text) {
    try {
        if constexpr (std::is_same_v<Real, double>) {
            return {'v', std::stod(text)};
        } else {
            return {'v', std::stof(text)};
        }
    } catch (const std::out_of_range&) {
        return {'r', Real()};
    } catch (const std::invalid_argument&) {
        return {'i', Real()};
    }
}

template <typename Real> bool SameNumber(Real a, Real b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

// Returns a text that resembles a number.
std::string RandomNumberText(std::mt19937_64& random) {
    static constexpr const char* kPieces[] = {"0", "1",  "5",  "9",  "00", "123", "999", "4503599627370497",
                                              ".", "-",  "+",  "e",  "E",  "e-",  "e+",  "p",
                                              " ", "0x", "0X", "aF", "p-", "inf", "nan", "x",
                                              "3", "7",  "2",  "8",  "30", "05",  "17",  "\t"};
    std::string text;
    const size_t count = 1 + random() % 9;
    for (size_t i = 0; i < count; ++i) {
        text += kPieces[random() % std::size(kPieces)];
    }
    return text;
}

template <typename Real> void CompareWithLibrary(const std::string& text, std::optional<Real> ours) {
    const Outcome<Real> library = LibraryOutcome<Real>(text);
    if (ours && std::fpclassify(*ours) == FP_SUBNORMAL) {
        return;  // libraries differ here; a test of its own covers ours
    }
    if (library.first == 'v') {
        ASSERT_TRUE(ours.has_value()) << '"' << text << '"';
        ASSERT_TRUE(SameNumber(*ours, library.second))
            << '"' << text << "\" " << *ours << ' ' << library.second;
    } else {
        ASSERT_FALSE(ours.has_value()) << '"' << text << '"';
    }
}

TEST(ParseDouble, AgreesWithTheLibraryOnRandomTexts) {
    std::mt19937_64 random(20240611);
    for (int i = 0; i < RandomRounds(200000); ++i) {
        const std::string text = RandomNumberText(random);
        CompareWithLibrary<double>(text, Double(text));
        CompareWithLibrary<float>(text, Float(text));
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ParseDouble, ReadsEveryDoubleBack) {
    std::mt19937_64 random(7);
    for (int i = 0; i < RandomRounds(200000); ++i) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) {
            continue;
        }
        char buffer[32];
        const std::string_view text(buffer,
                                    std::to_chars(buffer, buffer + sizeof(buffer), value).ptr - buffer);
        ASSERT_EQ(Double(text), value) << text;
    }
}

TEST(Scan, ReturnsTheEndOfTheNumberAndNeverReadsPastTheRange) {
    const std::string text = " 12,0x1p3,-7";
    int32_t number = 0;
    double real = 0;
    const char* end = text.data() + text.size();
    const char* at = ScanInt(text.data(), end, &number);
    ASSERT_EQ(at, text.data() + 3);
    at = ScanDouble(at + 1, end, &real);
    ASSERT_EQ(at, text.data() + 9);
    EXPECT_EQ(real, 8.0);
    EXPECT_EQ(ScanInt(at + 1, end - 1, &number), nullptr) << "the 7 is outside the range";
    EXPECT_EQ(ScanInt(at + 1, end, &number), end);
    EXPECT_EQ(number, -7);
}

TEST(Read, ThrowsWithoutALeadingNumber) {
    EXPECT_EQ(ReadInt("7x"), 7);
    EXPECT_EQ(ReadDouble("7.5x"), 7.5);
    EXPECT_THROW(ReadInt("x"), NumberError);
    EXPECT_THROW(ReadInt("2147483648"), NumberError);
    EXPECT_THROW(ReadDouble(""), NumberError);
}

TEST(IsWholeInt, RejectsTextAfterTheNumber) {
    for (const char* text : {"0", "-5", "+5", " 5", "2147483647", "-2147483648"}) {
        EXPECT_TRUE(IsWholeInt(text)) << text;
    }
    for (const char* text : {"", " ", "5 ", "5x", "1.0", "x", "2147483648", "-2147483649", "5\r"}) {
        EXPECT_FALSE(IsWholeInt(text)) << text;
    }
}

TEST(AppendStreamDouble, WritesSixSignificantDigits) {
    EXPECT_EQ(Streamed(0.5), "0.5");
    EXPECT_EQ(Streamed(1234.5678), "1234.57");
    EXPECT_EQ(Streamed(1234567.0), "1.23457e+06");
    EXPECT_EQ(Streamed(0), "0");
    EXPECT_EQ(Streamed(-0.0), "-0");
    EXPECT_EQ(Streamed(1), "1");
    EXPECT_EQ(Streamed(100000), "100000");
    EXPECT_EQ(Streamed(999999), "999999");
    EXPECT_EQ(Streamed(999999.5), "1e+06");
    EXPECT_EQ(Streamed(1000000), "1e+06");
    EXPECT_EQ(Streamed(0.0001), "0.0001");
    EXPECT_EQ(Streamed(0.00001), "1e-05");
    EXPECT_EQ(Streamed(0.000099999951), "0.0001");
    EXPECT_EQ(Streamed(-1.5e-7), "-1.5e-07");
    EXPECT_EQ(Streamed(1e100), "1e+100");
    EXPECT_EQ(Streamed(-1.23456789e-300), "-1.23457e-300");
    EXPECT_EQ(Streamed(0.1F), "0.1");
    EXPECT_EQ(Streamed(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(Streamed(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(Streamed(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(Streamed(-1.7976931348623157e308).size(), 13U);
}

TEST(AppendStreamDouble, RoundsTheExactBinaryValueHalfToEven) {
    EXPECT_EQ(Streamed(1234565), "1.23456e+06");
    EXPECT_EQ(Streamed(1234575), "1.23458e+06");
    EXPECT_EQ(Streamed(123456.5), "123456");
    EXPECT_EQ(Streamed(123457.5), "123458");
    EXPECT_EQ(Streamed(1.000005), IostreamText(1.000005));
    EXPECT_EQ(Streamed(0.1000005), IostreamText(0.1000005));
}

// Values of many kinds, compared with the stream.
TEST(AppendStreamDouble, EqualsTheStreamByteForByte) {
    std::mt19937_64 random(42);
    const auto check = [](double value) {
        if (std::isnan(value) && std::signbit(value)) {
            return;  // C libraries differ on whether they show the sign
        }
        ASSERT_EQ(Streamed(value), IostreamText(value)) << std::bit_cast<uint64_t>(value);
    };
    for (int i = 0; i < RandomRounds(100000) && !HasFatalFailure(); ++i) {
        check(std::bit_cast<double>(random()));                  // any bits
        check(static_cast<double>(random() % 100000000) / 1e4);  // recorded times
        check(static_cast<double>(random() % 40000000) / 2);     // halves
        check(std::ldexp(static_cast<double>(random() >> 11), -static_cast<int>(random() % 80)));
        check((static_cast<double>(random() % 1000000) + 0.5) *
              std::pow(10.0, static_cast<int>(random() % 16) - 10));
        check(static_cast<float>(static_cast<double>(random() % 1000) / 100));
    }
    for (int exponent = -320; exponent <= 308; ++exponent) {
        const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
        check(power);
        check(std::nextafter(power, 0));
        check(std::nextafter(power, 1e308));
        check(power * 9.999995);
        check(-power * 1.2345675);
    }
}

TEST(WriteFixedDouble, EqualsPrintfByteForByte) {
    const auto check = [](double value) {
        char expected[400];
        char buffer[kFixedDoubleLength];
        std::snprintf(expected, sizeof expected, "%f", value);
        ASSERT_EQ(std::string(buffer, WriteFixedDouble(buffer, value)), expected);
    };
    std::mt19937_64 random(99);
    for (int i = 0; i < RandomRounds(100000) && !HasFatalFailure(); ++i) {
        check(static_cast<double>(random() % 100000000) / 1e4);    // recorded times
        check(static_cast<double>(random() % 40000000) / 128);     // halves of a millionth
        check(static_cast<double>(random() % 4000000000U) / 1e6);  // near millionths
        check(std::ldexp(static_cast<double>(random() >> 11), -static_cast<int>(random() % 120)));
        check(-static_cast<double>(random() % 100000000) / 1e4);
    }
    for (const double value : {0.0, -0.0, 0.9999995, 0.9999994, 4294967295.9999998, 4294967296.5, 1e-7, 1e300,
                               -1.7976931348623157e308}) {
        check(value);
    }
}

TEST(AppendInt, WritesDecimals) {
    std::string text;
    AppendInt(text, 0);
    AppendInt(text, -5);
    AppendInt(text, std::numeric_limits<int64_t>::min());
    AppendInt(text, std::numeric_limits<int64_t>::max());
    EXPECT_EQ(text, "0-5-92233720368547758089223372036854775807");
}

}  // namespace
