// usage: introspection_load_probe LIBRARY
//
// A tool that is linked against the runtime alone loads the library and finds its types by name.
// The object tracker is on from before the runtime's own initialisation, so a record that was not
// leaked on purpose would be counted. As a program of its own, because a test program is loaded
// together with the library; built with a leak sanitizer, it ends in that one's check too.

#include <cstdio>
#include <dlfcn.h>
#include <string_view>

#include "runtime/vek/VekType.h"

namespace {

// Order: the functions of this array run before any initialisation, that of libraries included.
__attribute__((no_sanitize("address", "undefined"))) void trackFromTheBeginning() {
  Vek::ptrifTrackOn_ = true;
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const preinit)() = trackFromTheBeginning;

int failures = 0;

void check(bool holds, char const* what) {
  if (holds) return;
  std::printf("FAILED: %s\n", what);
  ++failures;
}

class Object final : public Vek::PtrInterface {
 private:
  ~Object() override = default;
};

constexpr std::string_view kOurs[]{"LinkFlap::Root", "LinkFlap::LinkFlapSm",
                                   "LinkFlap::LinkFlapIntfSm", "LinkFlap::LinkFlapProfileSm"};
constexpr std::string_view kRuntimes[]{"Vek::PtrInterface",
                                       "Vek::Entity",
                                       "LinkFlap::Config",
                                       "LinkFlap::IntfConfig",
                                       "LinkFlap::ProfileConfig",
                                       "Interface::AllEthPhyIntfConfigDir",
                                       "Interface::AllEthPhyIntfStatusDir",
                                       "Interface::EthPhyIntfStatus",
                                       "Interface::EthPhyIntfConfig",
                                       "Errdisable::Config",
                                       "Errdisable::CauseStatus"};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  auto& types = Vek::IntrospectionReactor::global();
  check(Vek::ptrifTrackOn_, "tracking is on");
  for (std::string_view const name : kRuntimes)
    check(types.typeNode(name) != nullptr, name.data());
  for (std::string_view const name : kOurs)
    check(types.typeNode(name) == nullptr, "a type of the library is there before the library is");
  check(Vek::PtrTrack::live() == 0, "the runtime's records are not reported");

  void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::printf("FAILED: %s\n", dlerror());
    return 1;
  }
  for (std::string_view const name : kOurs) {
    Vek::VekType const* const type = types.typeNode(name);
    check(type != nullptr && type->fullName() == name && !type->attrs().empty(), name.data());
  }
  check(Vek::PtrTrack::live() == 0, "the library's records are not reported");

  // The tracker does count: this check is one that can fail.
  {
    auto const object = Vek::make<Object>();
    check(Vek::PtrTrack::live() == 1, "an object is reported");
  }
  check(Vek::PtrTrack::live() == 0, "an object that has gone is not reported");
  if (failures == 0) std::puts("ok");
  return failures == 0 ? 0 : 1;
}
