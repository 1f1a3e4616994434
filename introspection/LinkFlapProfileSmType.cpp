#include <string>

#include "runtime/model/StateTypes.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/TypeDefinition.h"
#include "runtime/vek/Wrap.h"

#include "introspection/Types.h"

namespace {

/// The index space of a queue as text: "HEADINDEX:NEXTINDEX".
Vek::ValueStorage metadataOfText(char const*& begin, char const* end) {
  char const* at = begin;
  try {
    auto const head = Vek::detail::unsignedOfText(at, end);
    if (at != end && *at == ':') {
      auto const next = Vek::detail::unsignedOfText(++at, end);
      begin = at;
      return Vek::String{std::to_string(std::get<std::uint32_t>(head)) + ":" +
                         std::to_string(std::get<std::uint32_t>(next))};
    }
  } catch (Vek::RangeException const&) {
    // A half of it does not help: what does not convert is the whole.
  }
  Vek::cannotConvert(begin, end, typeid(Vek::LinkQueueMetadata));
}

std::string metadataText(Vek::ValueStorage const& value) {
  return std::string{std::get<Vek::String>(value).view()};
}

}  // namespace

template <>
struct Vek::ValueTraits<Vek::LinkQueueMetadata> {
  static constexpr ValueType type{"LinkFlap::LinkFlapProfileSm::LinkFlapTimeStampMetadata",
                                  &typeid(LinkQueueMetadata), false, metadataText, metadataOfText};
  static ValueStorage store(LinkQueueMetadata const& value) {
    return String{std::to_string(value.headIndex) + ":" + std::to_string(value.nextIndex)};
  }
  static LinkQueueMetadata load(ValueStorage const& value) {
    std::string_view const text = std::get<String>(value).view();
    char const* at = text.data();
    char const* const end = at + text.size();
    LinkQueueMetadata result;
    result.headIndex = std::get<std::uint32_t>(detail::unsignedOfText(at, end));
    ++at;
    result.nextIndex = std::get<std::uint32_t>(detail::unsignedOfText(at, end));
    return result;
  }
};

namespace LinkFlap {

namespace {

using Sm = LinkFlapProfileSm;

/// A walk over the flap times, by index.
struct TimeStampWalk {
  Sm::LinkFlapTimeStampQueue::Iterator at;

  explicit operator bool() const { return static_cast<bool>(at); }
  Vek::Value key() const { return Vek::Value{at->vek_index()}; }
  Vek::Value obj() const { return Vek::Value{at->time()}; }
  void inc() { ++at; }
  void del(Sm& sm) { sm.linkFlapTimeStampDel(at); }
};

Sm const& self(Vek::PtrInterface const& object) {
  return static_cast<Sm const&>(object);
}

Sm& self(Vek::PtrInterface& object) {
  return static_cast<Sm&>(object);
}

void defineTimeStamps(Vek::VekAttr& attr) {
  attr.writeType = &Vek::ValueTraits<double>::type;
  attr.size = [](Vek::PtrInterface const& object) {
    return self(object).linkFlapTimeStamp().count();
  };
  attr.member = [](Vek::PtrInterface const& object, Vek::Value const& index) {
    auto const* const entry = self(object).linkFlapTimeStamp().find(index.as<std::uint32_t>());
    return entry == nullptr ? Vek::Value{} : Vek::Value{entry->time()};
  };
  attr.memberWrite = [](Vek::PtrInterface& object, Vek::Value const& index,
                        Vek::Value const& time) {
    self(object).linkFlapTimeStampIs(index.as<std::uint32_t>(), time.as<double>());
  };
  attr.memberDel = [](Vek::PtrInterface& object, Vek::Value const& index) {
    auto const key = index.as<std::uint32_t>();
    if (self(object).linkFlapTimeStamp().find(key) == nullptr) return Vek::Value{};
    return Vek::Value{self(object).linkFlapTimeStampDel(key)};
  };
  attr.iterate = [](Vek::PtrInterface const& object,
                    Vek::Value const* index) -> std::unique_ptr<Vek::AttributeIterator> {
    TimeStampWalk walk{self(object).linkFlapTimeStamp().iterator()};
    // From the first entry that is not before the index, in the order of the queue.
    if (index != nullptr) {
      auto const from = index->as<std::uint32_t>();
      auto const beyond = [&](std::uint32_t at) {  // by how much `from` is, less one
        return Vek::wrappingDifference(from, Vek::wrappingSum(at, 1));
      };
      while (walk.at && beyond(walk.at->vek_index()) < (1U << 31U))
        ++walk.at;
    }
    return std::make_unique<Vek::AttributeWalk<Sm, TimeStampWalk>>(
        Vek::Ptr<Sm const>{&self(object)}, walk);
  };
}

/// The index space of the queue: found by its name, not listed among the attributes.
void defineMetadata(Vek::VekAttr& attr) {
  using Metadata = Sm::LinkFlapTimeStampMetadata;
  attr.kind = Vek::AttrKind::state;
  attr.valueType = Vek::ValueTraits<Metadata>::type.name;
  attr.writeType = &Vek::ValueTraits<Metadata>::type;
  attr.read = [](Vek::PtrInterface const& object) {
    return Vek::Value{self(object).linkFlapTimeStampMetadata()};
  };
  attr.write = [](Vek::PtrInterface& object, Vek::Value const& value) {
    self(object).linkFlapTimeStampMetadataIs(value.as<Metadata>());
  };
}

}  // namespace

void defineLinkFlapProfileSm(Vek::IntrospectionReactor& reactor, LinkFlapProfileSm::_Type& type) {
  using Vek::AttrKind;
  // clang-format off
  Vek::TypeDefinition<Sm> sm{reactor, type};
  sm.value<&Sm::vekFwkActivity>(AttrKind::activity, 129, "vekFwkActivity");
  sm.value<&Sm::profileName>(AttrKind::input, 130, "profileName");
  sm.value<&Sm::profileConfig, &Sm::profileConfigIs, &Sm::profileConfigDel>(AttrKind::input, 131, "profileConfig");
  sm.value<&Sm::config>(AttrKind::input, 132, "config");
  sm.value<&Sm::ethPhyIntfConfig>(AttrKind::input, 133, "ethPhyIntfConfig");
  sm.value<&Sm::ethPhyIntfStatus, &Sm::ethPhyIntfStatusIs, &Sm::ethPhyIntfStatusDel>(AttrKind::input, 134, "ethPhyIntfStatus");
  sm.value<&Sm::causeStatus>(AttrKind::input, 135, "causeStatus");
  sm.value<&Sm::intfId>(AttrKind::state, 136, "intfId");
  sm.value<&Sm::curIntervals, &Sm::curIntervalsIs>(AttrKind::state, 137, "curIntervals");
  sm.value<&Sm::curFlaps, &Sm::curFlapsIs>(AttrKind::state, 138, "curFlaps");
  sm.value<&Sm::curViolations, &Sm::curViolationsIs>(AttrKind::state, 139, "curViolations");
  defineTimeStamps(sm.plain(AttrKind::queue, 140, "linkFlapTimeStamp", "double", &Vek::ValueTraits<std::uint32_t>::type));
  sm.handler<&Sm::handleProfileValues>(0, "handleProfileValues", {"profileName", "intfId"});
  sm.handler<&Sm::handleLinkStatus>(146, "handleLinkStatus");
  sm.value<&Sm::initialized, &Sm::initializedIs>(AttrKind::state, 147, "initialized");
  sm.handler<&Sm::handleInitialized>(148, "handleInitialized");
  sm.value<&Sm::intfSm>(AttrKind::owner, 0, "intfSm");
  sm.value<&Sm::fwkKey>(AttrKind::key, 0, "fwkKey");
  sm.handler<&Sm::hasNotificationActiveIs>(0, "hasNotificationActiveIs", {"hasNotificationActiveIs"});
  sm.handler<&Sm::vekDoZombieReactors>(0, "vekDoZombieReactors", {"on"});
  // clang-format on
  defineMetadata(type.companionIs("linkFlapTimeStampMetadata", 142));
}

}  // namespace LinkFlap
