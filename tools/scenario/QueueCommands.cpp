#include "tools/scenario/Commands.h"

namespace Scenario {

namespace {

using ProfileSm = LinkFlap::LinkFlapProfileSm;

}  // namespace

void addQueueCommands(CommandTable& table) {
  table.addForProfileSm("q.enq", "IF P T", [](World&, ProfileSm::Ptr const& sm, double time) {
    sm->linkFlapTimeStampEnq(time);
  });

  table.addForProfileSm("q.deq", "IF P", [](World& world, ProfileSm::Ptr const& sm) {
    double const time = sm->linkFlapTimeStampDeq();
    world.out().line("V ", time);
  });

  table.addForProfileSm("q.get", "IF P INDEX",
                        [](World& world, ProfileSm::Ptr const& sm, std::uint32_t index) {
                          double const time = sm->linkFlapTimeStamp(index);
                          world.out().line("V ", time);
                        });

  table.addForProfileSm("q.is", "IF P INDEX T",
                        [](World&, ProfileSm::Ptr const& sm, std::uint32_t index, double time) {
                          sm->linkFlapTimeStampIs(index, time);
                        });

  table.addForProfileSm("q.new", "IF P INDEX T",
                        [](World&, ProfileSm::Ptr const& sm, std::uint32_t index, double time) {
                          (void)sm->newLinkFlapTimeStamp(index, time);
                        });

  table.addForProfileSm("q.del", "IF P INDEX",
                        [](World& world, ProfileSm::Ptr const& sm, std::uint32_t index) {
                          double const time = sm->linkFlapTimeStampDel(index);
                          world.out().line("V ", time);
                        });

  table.addForProfileSm("q.delall", "IF P",
                        [](World&, ProfileSm::Ptr const& sm) { sm->linkFlapTimeStampDelAll(); });

  table.addForProfileSm(
      "q.meta", "IF P HEADINDEX NEXTINDEX",
      [](World&, ProfileSm::Ptr const& sm, std::uint32_t headIndex, std::uint32_t nextIndex) {
        sm->linkFlapTimeStampMetadataIs({headIndex, nextIndex});
      });
}

}  // namespace Scenario
