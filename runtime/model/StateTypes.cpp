#include "runtime/model/StateTypes.h"

#include <tuple>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/TypeDefinition.h"

// The records of the state types, made from the very descriptors that raise their notifications.

namespace {

using Vek::AttrKind;
using Vek::Value;
using Vek::ValueTraits;
using Vek::VekAttr;

template <typename T, std::size_t I>
inline constexpr auto descriptor = std::get<I>(T::vekAttributes);

template <typename T, std::size_t I, typename Owner, typename V, typename Watcher>
void define(Vek::TypeDefinition<T>& definition, Vek::Scalar<Owner, V, Watcher> const& attribute) {
  VekAttr& attr = definition.plain(AttrKind::state, attribute.id, attribute.name,
                                   ValueTraits<V>::type.name, nullptr);
  attr.notifying = true;
  attr.writeType = &ValueTraits<V>::type;
  attr.read = [](Vek::PtrInterface const& object) {
    return Value{static_cast<T const&>(object).template get<descriptor<T, I>>()};
  };
  attr.write = [](Vek::PtrInterface& object, Value const& value) {
    static_cast<T&>(object).template set<descriptor<T, I>>(value.as<V>());
  };
}

template <typename T, std::size_t I, typename Owner, typename V>
void define(Vek::TypeDefinition<T>& definition, Vek::Derived<Owner, V> const& attribute) {
  VekAttr& attr = definition.plain(AttrKind::state, attribute.id, attribute.name,
                                   ValueTraits<V>::type.name, nullptr);
  attr.read = [](Vek::PtrInterface const& object) {
    return Value{(static_cast<T const&>(object).*descriptor<T, I>.read)()};
  };
}

template <typename T, std::size_t I, typename Owner, typename K, typename V, typename Watcher>
void define(Vek::TypeDefinition<T>& definition, Vek::Keyed<Owner, K, V, Watcher> const& attribute) {
  VekAttr& attr = definition.plain(AttrKind::collection, attribute.id, attribute.name,
                                   ValueTraits<V>::type.name, &ValueTraits<K>::type);
  attr.notifying = true;
  attr.writeType = &ValueTraits<V>::type;
  attr.size = [](Vek::PtrInterface const& object) {
    return static_cast<T const&>(object).template members<descriptor<T, I>>().size();
  };
  attr.member = [](Vek::PtrInterface const& object, Value const& key) {
    V const* const member =
        static_cast<T const&>(object).template members<descriptor<T, I>>().find(key.as<K>());
    return member == nullptr ? Value{} : Value{*member};
  };
  attr.memberWrite = [](Vek::PtrInterface& object, Value const& key, Value const& value) {
    static_cast<T&>(object).template memberIs<descriptor<T, I>>(key.as<K>(), value.as<V>());
  };
  static constexpr auto remove = [](T& object, K const& key) {
    object.template memberDel<descriptor<T, I>>(key);
  };
  attr.memberDel = [](Vek::PtrInterface& object, Value const& key) {
    auto& self = static_cast<T&>(object);
    V const* const member = self.template members<descriptor<T, I>>().find(key.as<K>());
    Value removed = member == nullptr ? Value{} : Value{*member};
    remove(self, key.as<K>());
    return removed;
  };
  attr.iterate = [](Vek::PtrInterface const& object,
                    Value const* key) -> std::unique_ptr<Vek::AttributeIterator> {
    using Walk = Vek::detail::HashWalk<T, typename Vek::Collection<K, V>::Iterator, remove>;
    auto const& self = static_cast<T const&>(object);
    auto const& members = self.template members<descriptor<T, I>>();
    return std::make_unique<Vek::AttributeWalk<T, Walk>>(
        Vek::Ptr<T const>{&self},
        Walk{key == nullptr ? members.begin() : members.from(key->as<K>())});
  };
}

template <typename T, std::size_t... I>
void defineAll(Vek::TypeDefinition<T>& definition, std::index_sequence<I...> /*attributes*/) {
  (define<T, I>(definition, descriptor<T, I>), ...);
}

template <typename T>
[[gnu::noinline]] Vek::VekType const& newStateType() {
  auto& reactor = Vek::IntrospectionReactor::global();
  auto const type = Vek::make<Vek::VekType>(T::vekTypeName, &Vek::entityType());
  type->referencesLeak();
  {
    Vek::TypeDefinition<T> definition{reactor, *type};
    defineAll(definition,
              std::make_index_sequence<std::tuple_size_v<decltype(T::vekAttributes)>>{});
  }
  reactor.typeNodeIs(*type, type->fullName());
  return *type;
}

template <typename T>
Vek::VekType const* stateType() {
  static Vek::VekType const& type = newStateType<T>();
  return &type;
}

/// Run when the runtime is loaded, so that a tool finds every type without making an object first.
// What it throws ends the process, as it should: there is no runtime without its types.
// NOLINTNEXTLINE(cert-err58-cpp)
[[maybe_unused]] bool const registered =
    (stateType<LinkFlap::Config>(), stateType<LinkFlap::IntfConfig>(),
     stateType<LinkFlap::ProfileConfig>(), stateType<Interface::AllEthPhyIntfConfigDir>(),
     stateType<Interface::AllEthPhyIntfStatusDir>(), stateType<Interface::EthPhyIntfStatus>(),
     stateType<Interface::EthPhyIntfConfig>(), stateType<Errdisable::Config>(),
     stateType<Errdisable::CauseStatus>(), true);

}  // namespace

namespace LinkFlap {
Vek::VekType const* Config::fwkType() const {
  return stateType<Config>();
}
Vek::VekType const* IntfConfig::fwkType() const {
  return stateType<IntfConfig>();
}
Vek::VekType const* ProfileConfig::fwkType() const {
  return stateType<ProfileConfig>();
}
}  // namespace LinkFlap

namespace Interface {
Vek::VekType const* AllEthPhyIntfConfigDir::fwkType() const {
  return stateType<AllEthPhyIntfConfigDir>();
}
Vek::VekType const* AllEthPhyIntfStatusDir::fwkType() const {
  return stateType<AllEthPhyIntfStatusDir>();
}
Vek::VekType const* EthPhyIntfConfig::fwkType() const {
  return stateType<EthPhyIntfConfig>();
}
Vek::VekType const* EthPhyIntfStatus::fwkType() const {
  return stateType<EthPhyIntfStatus>();
}
}  // namespace Interface

namespace Errdisable {
Vek::VekType const* Config::fwkType() const {
  return stateType<Config>();
}
Vek::VekType const* CauseStatus::fwkType() const {
  return stateType<CauseStatus>();
}
}  // namespace Errdisable
