#include <string>

#include "bench/cases/Chassis.h"
#include "bench/harness/Subject.h"

// Case 9: interfaces come to a running machine; a machine is installed over those that are there;
// it is torn down. Each is counted for one interface.

namespace Bench {

namespace {

using State = std::unique_ptr<Chassis>;

std::unique_ptr<Subject> admission(std::size_t interfaces) {
  return subject(
      interfaces, std::make_unique<State>(), [](State& chassis) { chassis->publishAll(); },
      [interfaces](State& chassis) {
        chassis = std::make_unique<Chassis>(interfaces);
        chassis->install();
      });
}

State published(std::size_t interfaces) {
  auto chassis = std::make_unique<Chassis>(interfaces);
  chassis->publishAll();
  return chassis;
}

std::unique_ptr<Subject> firstPass(std::size_t interfaces) {
  return subject(
      interfaces, published(interfaces), [](Chassis& chassis) { chassis.install(); },
      [](Chassis& chassis) { chassis.remove(); });
}

std::unique_ptr<Subject> tearDown(std::size_t interfaces) {
  return subject(
      interfaces, published(interfaces), [](Chassis& chassis) { chassis.remove(); },
      [](Chassis& chassis) { chassis.install(); });
}

}  // namespace

void addAdmission(Registry& registry) {
  for (std::size_t const interfaces : {1000U, 100000U, 1000000U}) {
    std::string const size = std::to_string(interfaces);
    registry.add("9/admission/" + size, [interfaces] { return admission(interfaces); });
    registry.add("9/first-pass/" + size, [interfaces] { return firstPass(interfaces); });
    registry.add("9/tear-down/" + size, [interfaces] { return tearDown(interfaces); });
  }
}

}  // namespace Bench
