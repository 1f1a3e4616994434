#include "statemachines/LinkFlapSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

/// Calls `visit(intfId, lfIntfConfig)` on every interface of the status directory; the second is
/// its own link-flap settings, or empty. Members may come and go meanwhile.
template <typename Visit>
void LinkFlapSm::forEachInterface(Visit visit) {
  auto const statusDir = ethPhyIntfStatusDir();
  for (auto const& status : statusDir->intfStatus())
    visit(status.key(), config()->intfConfig(status.key()));
}

// Deliberate, in the two handlers that select profiles: the interface's machine is handed on as
// found. An interface with a status but without a machine reaches `manageProfileSm` as an empty
// pointer, and its assertion ends the process.

void LinkFlapSm::handleProfileConfig(Vek::String name) {
  Ptr const self{this};  // whoever hears of a withdrawn record may remove this machine
  Trace::handleProfileConfig(this, "::handleProfileConfig(", name, ")");
  Assert::handleProfileConfig(initialized());
  bool const isDefault = config()->defaultProfileList(name);
  forEachInterface([&](Tarn::IntfId const& intfId, Vek::Ptr<IntfConfig const> const& settings) {
    // Deliberate: a list that holds only false members does not fall back to the defaults; the
    // number of members decides.
    bool const concerned =
        !settings ? isDefault
                  : settings->profileList(name) || (isDefault && settings->profileList().empty());
    if (concerned) manageProfileSm(linkFlapIntfSm(intfId));
  });
}

void LinkFlapSm::handleDefaultProfileList(Vek::String name) {
  Ptr const self{this};  // whoever hears of a withdrawn record may remove this machine
  Trace::handleDefaultProfileList(this, "::handleDefaultProfileList(", name, ")");
  Assert::handleDefaultProfileList(initialized());
  // Deliberate: whichever default profile changed, and to whatever, every interface that follows
  // the default list is examined anew.
  forEachInterface([&](Tarn::IntfId const& intfId, Vek::Ptr<IntfConfig const> const& settings) {
    if (!settings || settings->profileList().empty()) manageProfileSm(linkFlapIntfSm(intfId));
  });
}

void LinkFlapSm::handleDisabled(Vek::String cause) {
  Ptr const self{this};  // whoever hears of a withdrawn record may remove this machine
  Trace::handleDisabled(this, "::handleDisabled(", cause, ")");
  Assert::handleDisabled(initialized());
  if (cause != causeName_) return;
  // The new value is not read here: admission reads it, in both directions. Interfaces with
  // settings of their own do not depend on it.
  forEachInterface([&](Tarn::IntfId const& intfId, Vek::Ptr<IntfConfig const> const& settings) {
    if (!settings) handleIntf(intfId);
  });
}

}  // namespace LinkFlap
