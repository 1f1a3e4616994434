#include "tools/scenario/CommandTable.h"

#include <stdexcept>
#include <string>

namespace Scenario {

CommandTable::Command const* CommandTable::find(std::string_view name) const {
  auto const found = commands_.find(name);
  return found == commands_.end() ? nullptr : &found->second;
}

void CommandTable::insert(std::string_view name, std::string_view usage, Run run) {
  if (!commands_.emplace(name, Command{usage, std::move(run)}).second)
    throw std::logic_error{"two commands are named " + std::string{name}};
}

}  // namespace Scenario
