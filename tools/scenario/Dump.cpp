#include <map>
#include <sstream>
#include <string>

#include "tools/scenario/Commands.h"

namespace Scenario {

namespace {

void dumpProfileSm(Output& out, Tarn::IntfId const& intf, LinkFlap::LinkFlapProfileSm const& sm) {
  std::ostringstream entries;
  Output::formatNumbers(entries);
  for (auto entry = sm.linkFlapTimeStamp().iterator(); entry; ++entry)
    entries << ' ' << entry->vek_index() << ':' << entry->time();
  auto const& metadata = sm.linkFlapTimeStampMetadata();
  out.line("P ", intf, ' ', sm.profileName(), ' ', sm.initialized(), ' ', bool{sm.profileConfig()},
           ' ', sm.curFlaps(), ' ', sm.curIntervals(), ' ', sm.curViolations(), ' ',
           metadata.headIndex, ' ', metadata.nextIndex, ' ', sm.linkFlapTimeStamp().count(),
           entries.str());
}

void dumpIntfSm(Output& out, Tarn::IntfId const& intf, LinkFlap::LinkFlapIntfSm const& sm) {
  out.line("I ", intf, ' ', sm.enable(), ' ', sm.initialized(), ' ', bool{sm.intfConfig()});
  // The collections' own order is that of their hashes, which would say nothing to a reader.
  std::map<Vek::String, LinkFlap::LinkFlapProfileSm const*> sorted;
  for (LinkFlap::LinkFlapProfileSm const& profileSm : sm.linkFlapProfileSm())
    sorted.emplace(profileSm.profileName(), &profileSm);
  for (auto const& [name, profileSm] : sorted)
    dumpProfileSm(out, intf, *profileSm);
}

void dump(World& world) {
  Output& out = world.out();
  if (LinkFlap::LinkFlapSm const* const top = world.machine()) {
    out.line("M 1 ", top->initialized());
    std::map<Tarn::IntfId, LinkFlap::LinkFlapIntfSm const*> sorted;
    for (LinkFlap::LinkFlapIntfSm const& intfSm : top->linkFlapIntfSm())
      sorted.emplace(intfSm.fwkKey(), &intfSm);
    for (auto const& [intf, intfSm] : sorted)
      dumpIntfSm(out, intf, *intfSm);
  } else {
    out.line("M 0");
  }
  std::map<Tarn::IntfId, double> records;
  auto const causeStatus = world.causeStatus();
  for (auto const& record : causeStatus->intfStatus())
    records.emplace(record.key(), record.value());
  for (auto const& [intf, time] : records)
    out.line("C ", intf, ' ', time);
}

}  // namespace

void addDumpCommand(CommandTable& table) {
  table.add("dump", "", [](World& world) { dump(world); });
}

}  // namespace Scenario
