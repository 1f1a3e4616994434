#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <typeinfo>

#include "runtime/vek/Exception.h"

namespace Elsewhere {
struct Type {};
enum class Kind { one };
}  // namespace Elsewhere

namespace {

using Vek::Exception;
using Vek::Expect;

using IdBitArray = Exception::IdBitArray;

/// The exception of class `E`, and of no derived class, that `act` throws; fails when there is none.
template <typename E, typename Act>
E caught(Act act) {
  try {
    act();
  } catch (E const& exception) {
    EXPECT_EQ(typeid(exception), typeid(E));
    return exception;
  }
  ADD_FAILURE() << "nothing was thrown";
  return E{"", {}};
}

TEST(IdBitArray, HoldsWhatWasAdded) {
  IdBitArray ids;
  EXPECT_TRUE(ids.empty());
  ids.add(0).add(63);
  EXPECT_FALSE(ids.empty());
  EXPECT_TRUE(ids.has(0));
  EXPECT_TRUE(ids.has(63));
  EXPECT_FALSE(ids.has(1));
  EXPECT_FALSE(ids.has(64));
  EXPECT_FALSE(ids.has(4294967295U));
}

TEST(IdBitArray, RefusesAnIdBeyondItsSpace) {
  IdBitArray ids;
  EXPECT_THROW(ids.add(64), std::out_of_range);
  EXPECT_TRUE(ids.empty());
}

TEST(Exception, CarriesMessageIdsAndWhetherToRetry) {
  Exception const exception{"out of ports", IdBitArray{}.add(9), true};
  EXPECT_STREQ(exception.what(), "out of ports");
  EXPECT_EQ(exception.message(), "out of ports");
  EXPECT_TRUE(exception.ids().has(9));
  EXPECT_TRUE(exception.retriable());
  EXPECT_FALSE((Exception{"", {}}.retriable()));
}

TEST(Exception, EachKindIsThrownUnderItsOwnId) {
  auto const range = caught<Vek::RangeException>([] { Vek::throwRangeException("too far"); });
  EXPECT_STREQ(range.what(), "too far");
  EXPECT_TRUE(range.ids().has(Vek::kRangeException));
  EXPECT_FALSE(range.ids().has(Vek::kNameInUseException));
  EXPECT_FALSE(range.retriable());

  auto const inUse =
      caught<Vek::NameInUseException>([] { Vek::throwNameInUseException("the name"); });
  EXPECT_STREQ(inUse.what(), "the name");
  EXPECT_TRUE(inUse.ids().has(Vek::kNameInUseException));
  EXPECT_FALSE(inUse.ids().has(Vek::kRangeException));

  auto const type = caught<Vek::TypeException>([] { Vek::throwTypeException("Some::Type"); });
  EXPECT_STREQ(type.what(), "Some::Type");
  EXPECT_TRUE(type.ids().has(Vek::kTypeException));
}

TEST(Exception, KindsAreTellableApartAndAreAllStandardExceptions) {
  static_assert(std::is_base_of_v<std::exception, Exception>);
  static_assert(std::is_base_of_v<Exception, Vek::RangeException>);
  static_assert(std::is_base_of_v<Exception, Vek::NameInUseException>);
  static_assert(std::is_base_of_v<Exception, Vek::TypeException>);
  static_assert(!std::is_base_of_v<Vek::RangeException, Vek::NameInUseException>);
  static_assert(std::is_constructible_v<Vek::RangeException, Vek::String, IdBitArray>);
}

TEST(CannotConvert, QuotesTheTextAndNamesTheType) {
  std::string const text = "12x and more";
  auto const exception = caught<Vek::RangeException>(
      [&] { Vek::cannotConvert(text.data(), text.data() + 3, typeid(unsigned)); });
  EXPECT_STREQ(exception.what(), "cannot convert \"12x\" to unsigned int");
  EXPECT_TRUE(exception.ids().has(Vek::kRangeException));

  auto const ofEmpty = caught<Vek::RangeException>(
      [&] { Vek::cannotConvert(text.data(), text.data(), typeid(Elsewhere::Kind)); });
  EXPECT_STREQ(ofEmpty.what(), "cannot convert \"\" to Elsewhere::Kind");
}

TEST(Format, IsThatOfPrintf) {
  EXPECT_EQ(Vek::format("%s has %d of %u, %.2f", "Ethernet1", -3, 7U, 1.5),
            "Ethernet1 has -3 of 7, 1.50");
  EXPECT_EQ(Vek::format("%%"), "%");
  EXPECT_TRUE(Vek::format("%s", "").empty());
}

TEST(Format, HasNoLimitOfLength) {
  std::string const text(10000, 'x');
  Vek::String const formatted = Vek::format("<%s>", text.c_str());
  EXPECT_EQ(formatted.size(), 10002U);
  EXPECT_EQ(formatted.view(), "<" + text + ">");
}

TEST(TypeText, IsTheClassAsItsSourceNamesIt) {
  EXPECT_EQ(Vek::typeText(typeid(Elsewhere::Type)), "Elsewhere::Type");
  EXPECT_EQ(Vek::typeText(typeid(unsigned)), "unsigned int");
}

/// A type of a name from which no class can be read.
class UnreadableType : public std::type_info {
 public:
  UnreadableType() : type_info{"?"} {}
};

TEST(TypeText, IsTheBareNameWhereNoClassCanBeReadFromIt) {
  EXPECT_EQ(Vek::typeText(UnreadableType{}), "?");
}

TEST(Expect, NothingIsExpectedOutsideOfAScope) {
  EXPECT_FALSE(Expect::expected(IdBitArray{}.add(Vek::kRangeException)));
  EXPECT_FALSE(Expect::expected({}));
}

TEST(Expect, InnermostScopeDecides) {
  auto const range = IdBitArray{}.add(Vek::kRangeException);
  auto const both = IdBitArray{}.add(Vek::kRangeException).add(Vek::kTypeException);
  Expect const outer{Vek::kRangeException};
  EXPECT_TRUE(Expect::expected(range));
  EXPECT_TRUE(Expect::expected(both));
  {
    Expect const inner{Vek::kTypeException};
    EXPECT_FALSE(Expect::expected(range));
    EXPECT_TRUE(Expect::expected(both));
  }
  EXPECT_TRUE(Expect::expected(range));
}

TEST(Expect, NoExceptionDeclaresThatNoneIsExpected) {
  Expect const outer{Vek::kRangeException};
  Expect const inner{Vek::kNoException};
  EXPECT_FALSE(Expect::expected(IdBitArray{}.add(Vek::kRangeException)));
  EXPECT_FALSE(Expect::expected(IdBitArray{}.add(Vek::kNoException)));
}

TEST(Expect, EndsWhenItsScopeIsLeftByAnException) {
  try {
    Expect const scope{Vek::kRangeException};
    Vek::throwRangeException("expected");
  } catch (Exception const& exception) {
    EXPECT_FALSE(Expect::expected(exception.ids()));
  }
}

TEST(Expect, IsAMatterOfItsThread) {
  auto const ids = IdBitArray{}.add(Vek::kRangeException);
  Expect const scope{Vek::kRangeException};
  bool elsewhere = true;
  std::thread{[&] { elsewhere = Expect::expected(ids); }}.join();
  EXPECT_FALSE(elsewhere);
  EXPECT_TRUE(Expect::expected(ids));
}

TEST(Format, OfWhatCannotBeFormattedIsEmpty) {
  wchar_t const noCharacter[]{0x110000, 0};
  EXPECT_EQ(Vek::format("before %ls after", noCharacter), "");
}

}  // namespace
