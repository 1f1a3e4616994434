#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unordered_set>
#include <utility>

#include "runtime/vek/Exception.h"
#include "runtime/vek/String.h"

namespace {

using std::string_view_literals::operator""sv;
using Vek::Name;
using Vek::String;

std::string messageOfTooLong(std::string_view text) {
  try {
    String const string{text};
  } catch (Vek::RangeException const& exception) {
    return exception.what();
  }
  return "no exception";
}

TEST(String, HoldsTheTextItIsMadeFrom) {
  String const string{"Ethernet1"};
  EXPECT_STREQ(string.charPtr(), "Ethernet1");
  EXPECT_EQ(string.view(), "Ethernet1");
  EXPECT_EQ(string.size(), 9U);
  EXPECT_FALSE(string.empty());
}

TEST(String, DoesNotDependOnTheBufferItWasMadeFrom) {
  char buffer[] = "strict";
  String const string{buffer};
  buffer[0] = 'X';
  EXPECT_STREQ(string.charPtr(), "strict");
}

TEST(String, NullPointerAndEmptyTextsGiveTheEmptyString) {
  for (String const& string :
       {String{}, String{static_cast<char const*>(nullptr)}, String{""}, String{std::string_view{}},
        String{"abc"sv.substr(3)}, String{""} + String{}, String{} + "", "" + String{}}) {
    EXPECT_TRUE(string.empty());
    EXPECT_EQ(string.size(), 0U);
    EXPECT_STREQ(string.charPtr(), "");
  }
}

TEST(String, AllEmptyStringsShareOneBlock) {
  String const empty;
  EXPECT_TRUE(empty.sharesText(String{""}));
  EXPECT_TRUE(empty.sharesText(String{static_cast<char const*>(nullptr)}));
  EXPECT_TRUE(empty.sharesText(String{} + String{}));
  String const text{"a"};
  String moved{text};
  String const taker{std::move(moved)};
  EXPECT_TRUE(empty.sharesText(moved));  // NOLINT: a moved-from string is empty
}

TEST(String, EmptyBlockSurvivesItsLastUser) {
  for (int i = 0; i < 3; ++i) {
    String const empty;
    EXPECT_STREQ(empty.charPtr(), "");
  }
  EXPECT_STREQ(String{}.charPtr(), "");
}

TEST(String, MayHoldAnyByte) {
  String const string{"a\0b\xff"sv};
  EXPECT_EQ(string.size(), 4U);
  EXPECT_EQ(string.view(), "a\0b\xff"sv);
  EXPECT_STREQ(string.charPtr(), "a");
  EXPECT_FALSE(string == String{"a"});
  EXPECT_EQ((string + string).size(), 8U);
}

TEST(String, CopyingSharesTheText) {
  String const one{"strict"};
  String const copy{one};
  String assigned;
  assigned = one;
  EXPECT_TRUE(copy.sharesText(one));
  EXPECT_TRUE(assigned.sharesText(one));
  EXPECT_EQ(copy.charPtr(), one.charPtr());
  EXPECT_FALSE(one.sharesText(String{"strict"}));
}

TEST(String, TextOutlivesTheStringItWasCopiedFrom) {
  String copy;
  {
    String const original{"a text long enough to stand on the heap"};
    copy = original;
  }
  EXPECT_STREQ(copy.charPtr(), "a text long enough to stand on the heap");
}

TEST(String, SelfAssignmentChangesNothing) {
  String string{"strict"};
  String& same = string;
  string = same;
  EXPECT_EQ(string, "strict");
  string = std::move(same);
  EXPECT_EQ(string, "strict");
}

TEST(String, SwapExchangesTexts) {
  String one{"one"};
  String other{"other"};
  one.swap(other);
  EXPECT_EQ(one, "other");
  EXPECT_EQ(other, "one");
}

// The published test values of the 32-bit FNV-1a hash.
TEST(String, HashIsAFunctionOfTheTextAlone) {
  EXPECT_EQ(String{}.hash(), 0x811C9DC5U);
  EXPECT_EQ(String{"foobar"}.reversedHash(), 0x169F39FDU);
  EXPECT_EQ(String{"a"}.hash(), 0xE40C292CU);
  EXPECT_EQ(String{"foobar"}.hash(), 0xBF9CF968U);
  EXPECT_EQ((String{"foo"} + "bar").hash(), 0xBF9CF968U);
  EXPECT_EQ(Vek::textHash("foobar"), 0xBF9CF968U);
  EXPECT_EQ(String{"\xff"}.hash(), (0x811C9DC5U ^ 0xFFU) * 16777619U) << "bytes are unsigned";
}

TEST(String, StandardHashServesUnorderedContainers) {
  std::unordered_set<String> const set{"a", "b", String{"a"}};
  EXPECT_EQ(set.size(), 2U);
  EXPECT_TRUE(set.contains("b"));
}

TEST(String, IsComparedByText) {
  String const one{"strict"};
  EXPECT_TRUE(one == String{"strict"});
  EXPECT_TRUE(one != String{"strick"});
  EXPECT_TRUE(one != String{"stric"});
  EXPECT_TRUE(one == "strict");
  EXPECT_TRUE("strict" == one);
  EXPECT_TRUE(one == "strict"sv);
  EXPECT_FALSE(one == "Strict");
}

TEST(String, TakesANullPointerForTheEmptyTextEverywhere) {
  char const* const null = nullptr;
  EXPECT_TRUE(String{} == null);
  EXPECT_FALSE(String{"a"} == null);
  EXPECT_EQ(String{"a"} + null, "a");
  EXPECT_EQ(null + String{"a"}, "a");
}

TEST(String, EqualHashesDoNotMakeEqualTexts) {
  String const one{"costarring"};
  String const other{"liquid"};
  ASSERT_EQ(one.hash(), 0x5E4DAA9DU);
  ASSERT_EQ(other.hash(), 0x5E4DAA9DU);
  EXPECT_FALSE(one == other);
}

TEST(String, IsOrderedByUnsignedBytesAndAPrefixComesFirst) {
  EXPECT_LT(String{"Ethernet10"}, String{"Ethernet2"});
  EXPECT_LT(String{"a"}, String{"ab"});
  EXPECT_LT(String{}, String{"a"});
  EXPECT_LT(String{"z"}, String{"\x80"});
  EXPECT_LT(String{"a\0a"sv}, String{"a\0b"sv});
  EXPECT_FALSE(String{"a"} < String{"a"});
  EXPECT_GE(String{"b"}, String{"a"});
}

TEST(String, ConcatenationMakesANewText) {
  String const left{"left"};
  String const right{"right"};
  EXPECT_EQ(left + right, "leftright");
  EXPECT_EQ(left + "-", "left-");
  EXPECT_EQ("-" + right, "-right");
  EXPECT_EQ(left, "left");
  EXPECT_EQ(String{} + right, "right");
  EXPECT_EQ(left + String{}, "left");
}

TEST(String, RefusesATextBeyond32BitsOfLength) {
  constexpr std::size_t kTooLong{std::size_t{1} << 32U};
  void* const memory =
      mmap(nullptr, kTooLong, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  EXPECT_EQ(messageOfTooLong({static_cast<char const*>(memory), kTooLong}), "string too long");
  munmap(memory, kTooLong);
}

TEST(String, IsWrittenAsItsBytes) {
  std::ostringstream out;
  out << String{"a\0b"sv} << String{} << Name{"name"};
  EXPECT_EQ(out.str(), "a\0bname"sv);
}

TEST(Name, IsAStringOfATypeOfItsOwn) {
  static_assert(std::is_convertible_v<Name, String const&>);
  Name const name{"Ethernet1"};
  EXPECT_EQ(name.string(), "Ethernet1");
  EXPECT_STREQ(name.charPtr(), "Ethernet1");
  EXPECT_TRUE(name == Name{String{"Ethernet1"}});
  EXPECT_FALSE(name == Name{});
  EXPECT_EQ(Name{}.string(), "");
  EXPECT_TRUE(Name{name.string()}.string().sharesText(name.string()));
}

TEST(Name, IsReadAsAString) {
  Vek::Name const name{"Ethernet1"};
  Vek::String const& text = name;
  EXPECT_EQ(&text, &name.string()) << "the same string, not a copy";
  EXPECT_EQ(text, "Ethernet1");
}

}  // namespace
