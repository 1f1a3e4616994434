#include <bit>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "runtime/model/StateTypes.h"
#include "runtime/vek/TextConversion.h"

#include "tests/introspection/support/OddNames.h"
#include "tests/introspection/support/Operations.h"

namespace {

using namespace IntrospectionTest;
using Interface::PhyConfigState;
using Interface::RawLinkStatus;
using Tarn::IntfId;
using Vek::Name;
using Vek::sequenceToValue;
using Vek::strepToValue;
using Vek::String;

template <typename T>
std::string refusal(std::string_view text) {
  return thrownBy([&] { (void)strepToValue<T>(text); });
}

std::string cannotConvert(std::string_view text, std::string_view type) {
  std::string message{"Vek::RangeException 1: cannot convert \""};
  message += text;
  message += "\" to ";
  return message += type;
}

std::string junk(std::size_t column, std::string_view text) {
  std::string message{"Vek::RangeException 1: junk at column "};
  message += std::to_string(column) + " deserializing ";
  return message += text;
}

TEST(BoolText, IsAWordAndMayBeReadAsADigit) {
  EXPECT_EQ(Vek::Value{true}.text(), "true");
  EXPECT_EQ(Vek::Value{false}.text(), "false");
  EXPECT_TRUE(strepToValue<bool>("true"));
  EXPECT_TRUE(strepToValue<bool>("1"));
  EXPECT_FALSE(strepToValue<bool>("false"));
  EXPECT_FALSE(strepToValue<bool>("0"));
}

TEST(BoolText, NothingElseIsOne) {
  for (char const* const text : {"", " ", "t", "tru", "truer", "True", "TRUE", "yes", "2", "10",
                                 "01", "-1", " true", "false1", "\"true\""})
    EXPECT_EQ(refusal<bool>(text), cannotConvert(text, "bool"));
}

TEST(UnsignedText, IsDecimal) {
  for (unsigned const number : {0U, 1U, 9U, 10U, 4294967294U, 4294967295U}) {
    EXPECT_EQ(Vek::Value{number}.text(), std::to_string(number));
    EXPECT_EQ(strepToValue<std::uint32_t>(std::to_string(number)), number);
  }
  EXPECT_EQ(strepToValue<std::uint32_t>("007"), 7U);
}

TEST(UnsignedText, NothingElseIsOne) {
  for (char const* const text :
       {"", " 1", "+1", "-1", "-0", "4294967296", "99999999999999999999", "x", ".5", "\"1\""})
    EXPECT_EQ(refusal<std::uint32_t>(text), cannotConvert(text, "unsigned int"));
  EXPECT_EQ(refusal<std::uint32_t>("1.5"), junk(2, "1.5"));
  EXPECT_EQ(refusal<std::uint32_t>("0x10"), junk(2, "0x10"));
}

TEST(DoubleText, ReadsBackAsTheSameNumber) {
  using Limits = std::numeric_limits<double>;
  for (double const number : {0.0, -0.0, 1.0, 0.1, 1.0 / 3, 10.0, 2.5, 1e300, -1e-300,
                              123456789.125, Limits::max(), Limits::lowest(), Limits::min(),
                              Limits::denorm_min(), Limits::infinity(), -Limits::infinity()}) {
    std::string const text = Vek::Value{number}.text();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(strepToValue<double>(text)),
              std::bit_cast<std::uint64_t>(number))
        << text;
  }
  EXPECT_TRUE(std::isnan(strepToValue<double>(Vek::Value{std::nan("")}.text())));
}

TEST(DoubleText, IsTheShortestThatDoes) {
  EXPECT_EQ(Vek::Value{0.1}.text(), "0.1");
  EXPECT_EQ(Vek::Value{10.0}.text(), "10");
  EXPECT_EQ(Vek::Value{1e22}.text(), "1e+22");
  EXPECT_EQ(Vek::Value{-0.0}.text(), "-0");
  EXPECT_EQ(Vek::Value{std::numeric_limits<double>::infinity()}.text(), "inf");
  EXPECT_EQ(Vek::Value{std::nan("")}.text(), "nan");
}

TEST(DoubleText, TakesTheUsualForms) {
  EXPECT_EQ(strepToValue<double>("3"), 3.0);
  EXPECT_EQ(strepToValue<double>(".5"), 0.5);
  EXPECT_EQ(strepToValue<double>("-2.5e3"), -2500.0);
  EXPECT_EQ(strepToValue<double>("1E-2"), 0.01);
}

TEST(DoubleText, NothingElseIsOne) {
  for (char const* const text : {"", " 1", "+1", "-", ".", "e5", "1e999", "-1e999", "one"})
    EXPECT_EQ(refusal<double>(text), cannotConvert(text, "double"));
  EXPECT_EQ(refusal<double>("1.5.2"), junk(4, "1.5.2"));
  EXPECT_EQ(refusal<double>("1e"), junk(2, "1e"));
  EXPECT_EQ(refusal<double>("2 s"), junk(2, "2 s"));
}

TEST(EnumText, IsTheNumber) {
  EXPECT_EQ(Vek::Value{RawLinkStatus::up}.text(), "1");
  EXPECT_EQ(Vek::Value{PhyConfigState::inProgress}.text(), "2");
  EXPECT_EQ(strepToValue<RawLinkStatus>("2"), RawLinkStatus::down);
  EXPECT_EQ(strepToValue<PhyConfigState>("1"), PhyConfigState::pending);
  // The platform's enumeration may have enumerators that we do not know.
  EXPECT_EQ(strepToValue<RawLinkStatus>("77"), static_cast<RawLinkStatus>(77));
  EXPECT_EQ(refusal<RawLinkStatus>("up"), cannotConvert("up", "unsigned int"));
}

template <typename T>
class TextType : public testing::Test {};

using TextTypes = testing::Types<String, Name, IntfId>;
TYPED_TEST_SUITE(TextType, TextTypes);

TYPED_TEST(TextType, OddTextsReadBackAsTheyWere) {
  for (std::string const& odd : oddNames()) {
    TypeParam const original{String{odd}};
    std::string const text = Vek::Value{original}.text();
    EXPECT_EQ(strepToValue<TypeParam>(text), original) << text;
    // Nothing that ends a path, a line or a message too early.
    for (char const c : text)
      EXPECT_TRUE(static_cast<unsigned char>(c) >= 0x20 && c != 0x7f) << text;
  }
}

TYPED_TEST(TextType, EveryByteReadsBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    std::string const one(1, static_cast<char>(byte));
    all += one;
    EXPECT_EQ(strepToValue<TypeParam>(Vek::Value{TypeParam{String{one}}}.text()),
              TypeParam{String{one}})
        << byte;
  }
  EXPECT_EQ(strepToValue<TypeParam>(Vek::Value{TypeParam{String{all}}}.text()),
            TypeParam{String{all}});
}

TYPED_TEST(TextType, IsBareOnlyWhenItIsAPlainWord) {
  auto const textOf = [](char const* characters) {
    return Vek::Value{TypeParam{String{characters}}}.text();
  };
  EXPECT_EQ(textOf("Ethernet1"), "Ethernet1");
  EXPECT_EQ(textOf("a_B.c-d+e:9"), "a_B.c-d+e:9");
  EXPECT_EQ(textOf(""), R"("")");
  EXPECT_EQ(textOf("a b"), R"("a b")");
  EXPECT_EQ(textOf("Ethernet1/1"), R"("Ethernet1/1")");
  EXPECT_EQ(textOf("a[b]"), R"("a[b]")");
  EXPECT_EQ(textOf(R"(a"b)"), R"("a\"b")");
  EXPECT_EQ(textOf(R"(a\b)"), R"("a\\b")");
  EXPECT_EQ(textOf("a\tb\n\x7f"), R"("a\x09b\x0a\x7f")");
  EXPECT_EQ(textOf("Lücke"), "\"Lücke\"");
}

TYPED_TEST(TextType, MayBeQuotedWithoutNeed) {
  auto const read = [](char const* text) { return strepToValue<TypeParam>(text); };
  EXPECT_EQ(read(R"("Ethernet1")"), TypeParam{String{"Ethernet1"}});
  EXPECT_EQ(read(R"("\x41\x4a\x4A")"), TypeParam{String{"AJJ"}});
}

TYPED_TEST(TextType, RefusesWhatIsNoSuchText) {
  std::string const type = Vek::typeText(typeid(TypeParam));
  for (char const* const text :
       {"", " a", "/", "[", "]", R"(")", R"("a)", R"("a\")", R"("\)", R"("\n")", R"("\x")",
        R"("\x4")", R"("\x4g")", R"("\xg4")", "'a'", "\x01", "\xc3\xbc"})
    EXPECT_EQ(refusal<TypeParam>(text), cannotConvert(text, type));
}

TYPED_TEST(TextType, ReportsWhatFollows) {
  EXPECT_EQ(refusal<TypeParam>("a b"), junk(2, "a b"));
  EXPECT_EQ(refusal<TypeParam>(R"("a"b)"), junk(4, R"("a"b)"));
  EXPECT_EQ(refusal<TypeParam>(R"("a" )"), junk(4, R"("a" )"));
  EXPECT_EQ(refusal<TypeParam>(R"(a"b")"), junk(2, R"(a"b")"));
}

// At every column: a value of that many bytes, then what cannot be of it.
TEST(Junk, IsReportedAtItsColumn) {
  for (std::size_t length = 1; length <= 300; ++length) {
    std::string const word(length, 'x');
    for (char const* const tail : {" ", "!", "]", "\"", " y", "/a"})
      EXPECT_EQ(refusal<String>(word + tail), junk(length + 1, word + tail));
    std::string const quoted = '"' + std::string(length, ' ') + '"';
    EXPECT_EQ(refusal<String>(quoted + 'y'), junk(length + 3, quoted + 'y'));
    std::string const digits = "0." + std::string(length, '1');
    EXPECT_EQ(refusal<double>(digits + "s"), junk(length + 3, digits + "s"));
    std::string const zeros(length, '0');
    EXPECT_EQ(refusal<std::uint32_t>(zeros + ','), junk(length + 1, zeros + ','));
  }
  EXPECT_EQ(refusal<bool>("1 "), junk(2, "1 "));
  EXPECT_EQ(refusal<bool>("true "), junk(5, "true "));
  EXPECT_EQ(refusal<bool>("false]"), junk(6, "false]"));
}

// The message is made by a printf-like format, so it ends where the text has a NUL; the column does
// not mind.
TEST(Junk, BehindANulIsReportedAtItsColumnToo) {
  std::string_view const text{"ab\0c", 4};
  EXPECT_EQ(refusal<String>(text), junk(3, "ab"));
}

TEST(Junk, OfPercentSignsIsNoFormat) {
  EXPECT_EQ(refusal<String>("a%s%n%d"), junk(2, "a%s%n%d"));
}

// From a sequence, a value is taken off the front.
TEST(Sequence, LeavesWhatFollowsTheValue) {
  std::string_view const text{"12,true \"a b\"x 2.5e"};
  char const* at = text.data();
  char const* const end = at + text.size();
  EXPECT_EQ(sequenceToValue<std::uint32_t>(at, end), 12U);
  EXPECT_EQ(at - text.data(), 2);
  ++at;
  EXPECT_TRUE(sequenceToValue<bool>(at, end));
  EXPECT_EQ(at - text.data(), 7);
  ++at;
  EXPECT_EQ(sequenceToValue<String>(at, end), "a b");
  EXPECT_EQ(at - text.data(), 13);
  EXPECT_EQ(sequenceToValue<Name>(at, end), Name{"x"});
  ++at;
  EXPECT_EQ(sequenceToValue<double>(at, end), 2.5);
  EXPECT_EQ(at, end - 1);
  EXPECT_EQ(sequenceToValue<IntfId>(at, end), IntfId{"e"});
  EXPECT_EQ(at, end);
}

template <typename T>
void expectUntouched(std::string_view text) {
  char const* at = text.data();
  EXPECT_EQ(thrownBy([&] { (void)sequenceToValue<T>(at, text.data() + text.size()); }),
            cannotConvert(text, Vek::typeText(typeid(T))));
  EXPECT_EQ(at, text.data());
}

TEST(Sequence, IsUntouchedWhereThereIsNoValue) {
  expectUntouched<bool>("trues");
  expectUntouched<std::uint32_t>("99999999999");
  expectUntouched<double>("-x");
  expectUntouched<String>("\"open");
  expectUntouched<Name>("\"\\q\"");
  expectUntouched<IntfId>(" a");
}

TEST(Values, KnowTheirTypesAndAreComparedWithThem) {
  EXPECT_EQ(Vek::Value{1U}.type()->name, "unsigned int");
  EXPECT_EQ(Vek::Value{true}.type()->name, "bool");
  EXPECT_EQ(Vek::Value{1.0}.type()->name, "double");
  EXPECT_EQ(Vek::Value{String{"a"}}.type()->name, "Vek::String");
  EXPECT_EQ(Vek::Value{Name{"a"}}.type()->name, "Vek::Name");
  EXPECT_EQ(Vek::Value{IntfId{"a"}}.type()->name, "Tarn::IntfId");
  EXPECT_EQ(Vek::Value{RawLinkStatus::up}.type()->name, "Interface::RawLinkStatus");
  EXPECT_EQ(Vek::Value{PhyConfigState::pending}.type()->name, "Interface::PhyConfigState");
  EXPECT_EQ(Vek::Value{String{"a"}}, Vek::Value{String{"a"}});
  EXPECT_NE(Vek::Value{String{"a"}}, Vek::Value{String{"b"}});
  EXPECT_NE(Vek::Value{String{"a"}}, Vek::Value{Name{"a"}});
  EXPECT_NE(Vek::Value{1U}, Vek::Value{RawLinkStatus::up});
  EXPECT_NE(Vek::Value{}, Vek::Value{false});
}

TEST(Values, AreGivenAsTheirOwnTypeOnly) {
  EXPECT_EQ(Vek::Value{5U}.as<std::uint32_t>(), 5U);
  EXPECT_EQ(thrownBy([] { (void)Vek::Value{5U}.as<bool>(); }),
            "Vek::TypeException 3: unsigned int");
  EXPECT_EQ(thrownBy([] { (void)Vek::Value{String{"a"}}.as<IntfId>(); }),
            "Vek::TypeException 3: Vek::String");
  EXPECT_EQ(thrownBy([] { (void)Vek::Value{}.as<bool>(); }), "Vek::TypeException 3: no value");
}

// A pointer to const and one to non-const are one type to tools.
TEST(Values, OfAnObjectAreGivenWithAndWithoutTheRightToChangeIt) {
  auto const profile = Vek::make<LinkFlap::ProfileConfig>();
  Vek::Ptr<LinkFlap::ProfileConfig const> const readable{profile};
  EXPECT_EQ(Vek::Value{profile}.as<Vek::Ptr<LinkFlap::ProfileConfig const>>(), readable);
  EXPECT_EQ(Vek::Value{readable}.as<Vek::Ptr<LinkFlap::ProfileConfig>>(), profile);
  EXPECT_EQ(thrownBy([&] { (void)Vek::Value{readable}.as<Vek::Ptr<LinkFlap::Config>>(); }),
            "Vek::TypeException 3: LinkFlap::ProfileConfig");
}

TEST(Values, AnEmptyOneHasNoTypeAndNoText) {
  Vek::Value const none;
  EXPECT_TRUE(none.empty());
  EXPECT_EQ(none.type(), nullptr);
  EXPECT_EQ(none.text(), "");
}

}  // namespace
