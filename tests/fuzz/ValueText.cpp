// Conversions from text: of every value type, the whole of a text and one value after the other.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/vek/Exception.h"
#include "runtime/vek/GenericIf.h"

#include "tests/fuzz/Check.h"
#include "tests/fuzz/SmallTree.h"

namespace {

using Fuzz::check;
using Vek::Value;
using Vek::ValueTraits;
using Vek::ValueType;

template <typename... T>
constexpr auto typesOf() {
  return std::array{&ValueTraits<T>::type...};
}

constexpr auto kTypes =
    typesOf<bool, std::uint32_t, double, Vek::String, Vek::Name, Tarn::IntfId,
            Interface::RawLinkStatus, Interface::PhyConfigState, Vek::Ptr<LinkFlap::Root>,
            Vek::Ptr<LinkFlap::LinkFlapSm>, Vek::Ptr<LinkFlap::LinkFlapIntfSm>,
            Vek::Ptr<LinkFlap::LinkFlapProfileSm>, Vek::Ptr<LinkFlap::Config>,
            Vek::Ptr<LinkFlap::ProfileConfig>, Vek::Ptr<Interface::EthPhyIntfStatus>>();

/// Takes a value off the front; false, and nothing taken, when there is none.
bool take(ValueType const& type, char const*& begin, char const* end, Value& value) {
  char const* const before = begin;
  try {
    value = Value{type, type.fromText(begin, end)};
  } catch (Vek::RangeException const&) {
    check(begin == before, "a refused text was taken from");
    return false;
  }
  check(begin > before && begin <= end, "a value is no text, or more than there is");
  // The planted fault: the last digit of a large number is left.
  if (Fuzz::planted() && &type == &ValueTraits<double>::type &&
      std::string_view{before, begin}.find("e+") != std::string_view::npos)
    --begin;
  return true;
}

/// A value's text reads back as that value.
void readBack(Value const& value) {
  std::string const text = value.text();
  char const* at = text.data();
  Value again;
  check(take(*value.type(), at, text.data() + text.size(), again), "a value's text is refused");
  check(at == text.data() + text.size(), "a value's text is not all of it");
  // By text, since a number that is none equals nothing.
  check(again.text() == text, "a value's text reads back as another");
}

void whole(ValueType const& type, std::string_view text) {
  char const* at = text.data();
  Value front;
  bool const taken = take(type, at, text.data() + text.size(), front);
  std::string refused;
  try {
    Value const value = Vek::valueOfText(text, type);
    check(taken && at == text.data() + text.size(), "junk was passed over");
    check(value.text() == front.text(), "the whole is another value than the front");
    readBack(value);
    return;
  } catch (Vek::RangeException const& exception) {
    refused = exception.message().view();
  }
  if (!taken) {
    check(refused.starts_with("cannot convert \""), "a refusal that is none of a conversion");
    return;
  }
  std::string const column = std::to_string(at - text.data() + 1);
  check(refused == "junk at column " + column + " deserializing " + std::string{text}.c_str(),
        "junk reported at another column");
}

/// One value after the other, with what is none between them passed over up to the next blank.
void sequence(ValueType const& type, std::string_view text) {
  char const* at = text.data();
  char const* const end = at + text.size();
  while (at != end) {
    Value value;
    if (take(type, at, end, value)) {
      readBack(value);
    } else {
      at = std::find(at, end, ' ');
      if (at != end) ++at;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  Fuzz::SmallTree::instance();
  std::string_view const text{reinterpret_cast<char const*>(data), size};
  static ValueType const* const metadata =
      LinkFlap::LinkFlapProfileSm::_fwkType()->attr("linkFlapTimeStampMetadata")->writeType;
  for (ValueType const* const type : kTypes) {
    whole(*type, text);
    sequence(*type, text);
  }
  whole(*metadata, text);
  sequence(*metadata, text);
  return 0;
}
