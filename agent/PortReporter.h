#pragma once

#include "agent/LinkMonitor.h"

namespace LinkFlapd {

class Journal;

/// Writes a line for each thing that happens to a watched port.
class PortReporter final : public LinkMonitor::Listener {
 public:
  /// Ownership: `journal` outlives the reporter.
  explicit PortReporter(Journal& journal) : journal_{journal} {}

  void portAdded(Port const& port) override;
  void portRemoved(Port const& port, std::string const& renamedTo) override;
  void portAdminUp(Port const& port) override;
  void portChanged(Port const& port, PortChange const& change) override;

 private:
  void say(Port const& port, std::string const& what);

  Journal& journal_;
};

}  // namespace LinkFlapd
