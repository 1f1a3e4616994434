#include "tests/support/Switch.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <ostream>
#include <sstream>

#include "statemachines/SourcePoints.h"

namespace {

constexpr int kLevels[]{2, 8};

/// Replaces the address of a profile machine, at the beginning of a message, by what it is.
///
/// At once, within the sink: the line of `handleInitialized` comes from the machine's constructor,
/// before it stands in any collection, and a machine may be gone a moment later.
std::string rewritten(std::string_view message) {
  std::size_t const end = message.find("::");
  if (!message.starts_with("0x") || end == std::string_view::npos) return std::string{message};
  auto const address = std::stoull(std::string{message.substr(2, end - 2)}, nullptr, 16);
  auto const& sm =
      *reinterpret_cast<LinkFlap::LinkFlapProfileSm const*>(static_cast<std::uintptr_t>(address));
  std::ostringstream text;
  text << '@';
  if (sm.ethPhyIntfStatus())
    text << sm.intfId();
  else
    text << '-';
  text << '/' << sm.profileName() << message.substr(end);
  return text.str();
}

}  // namespace

std::ostream& operator<<(std::ostream& out, TraceLine const& line) {
  return out << line.level << ' ' << line.line << ' ' << line.function << ' ' << line.message;
}

std::ostream& operator<<(std::ostream& out, Counters const& counters) {
  return out << "flaps " << counters.flaps << " intervals " << counters.intervals << " violations "
             << counters.violations;
}

/// Writes down each change of the err-disable record.
class Switch::Recorder final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  explicit Recorder(std::vector<std::string>* writes) : writes_{writes} {}

  void onIntfStatus(Tarn::IntfId id) override {
    std::ostringstream text;
    text.precision(17);
    text << id;
    if (watched()->intfStatus().has(id))
      text << ' ' << watched()->intfStatus(id);
    else
      text << " withdrawn";
    writes_->push_back(text.str());
  }

 private:
  ~Recorder() override = default;

  std::vector<std::string>* writes_;
};

Switch::Switch() : Switch{Values{}} {}

Switch::Switch(Values values)
    : activity{Vek::make<Vek::ActivityConfig>()},
      configDir{Vek::make<Interface::AllEthPhyIntfConfigDir>()},
      statusDir{Vek::make<Interface::AllEthPhyIntfStatusDir>()},
      errdisableConfig{Vek::make<Errdisable::Config>()},
      config{Vek::make<LinkFlap::Config>()},
      root{LinkFlap::rootFactory("switch")},
      recorder_{Vek::make<Recorder>(&writes_)} {
  config->maxFlapsIs(values.maxFlaps);
  config->intervalIs(values.interval);
  causeStatusIs(Vek::make<Errdisable::CauseStatus>());
  previousTraceSink_ = Vek::traceSinkIs([this](Vek::TraceRecord const& record) {
    traces_.push_back(
        {record.level, record.line, std::string{record.function}, rewritten(record.message)});
  });
  previousExceptionSink_ = Vek::exceptionSinkIs(
      [this](Vek::CallbackFailure const& failure) { failures_.push_back(failure); });
  for (int const level : kLevels)
    LinkFlap::traceHandle().levelIs(level, true);
}

Switch::~Switch() {
  root = nullptr;
  for (Vek::CallbackFailure const& failure : failures_)
    ADD_FAILURE() << "an exception left a callback of " << failure.watcher << " for "
                  << failure.attributeName << ": " << failure.message;
  for (int const level : kLevels)
    LinkFlap::traceHandle().levelIs(level, false);
  Vek::exceptionSinkIs(std::move(previousExceptionSink_));
  Vek::traceSinkIs(std::move(previousTraceSink_));
}

void Switch::addInterface(Tarn::IntfId const& id) {
  addPhyConfig(id);
  addStatus(id);
}

void Switch::addPhyConfig(Tarn::IntfId const& id) {
  auto const object = Vek::make<Interface::EthPhyIntfConfig>(id);
  phyConfig_[id] = object;
  configDir->intfConfigIs(id, object);
}

void Switch::addStatus(Tarn::IntfId const& id) {
  auto const object = Vek::make<Interface::EthPhyIntfStatus>(id);
  status_[id] = object;
  statusDir->intfStatusIs(id, object);
}

Vek::Ptr<LinkFlap::ProfileConfig> Switch::profileIs(char const* name, ProfileValues values) {
  auto profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{name});
  profile->maxFlapsIs(values.maxFlaps);
  profile->intervalIs(values.interval);
  profile->violationsIs(values.violations);
  profile->trackedIntervalsIs(values.trackedIntervals);
  config->profileConfigIs(name, profile);
  return profile;
}

Vek::Ptr<LinkFlap::IntfConfig> Switch::settingsIs(Tarn::IntfId const& id, bool enabled,
                                                  ProfileList const& profiles) {
  auto settings = Vek::make<LinkFlap::IntfConfig>(Vek::Name{id.name()});
  settings->enabledIs(enabled);
  for (auto const& [name, selected] : profiles)
    settings->profileListIs(name, selected);
  config->intfConfigIs(id, settings);
  return settings;
}

Vek::Ptr<Interface::EthPhyIntfStatus> const& Switch::status(Tarn::IntfId const& id) const {
  return status_.at(id);
}

Vek::Ptr<Interface::EthPhyIntfConfig> const& Switch::phyConfig(Tarn::IntfId const& id) const {
  return phyConfig_.at(id);
}

void Switch::linkIs(Tarn::IntfId const& id, unsigned rawLinkStatus) {
  // Copied: a watcher may replace the interface under the change.
  auto const object = status(id);
  object->rawLinkStatusIs(static_cast<Interface::RawLinkStatus>(rawLinkStatus));
}

void Switch::phyConfigStateIs(Tarn::IntfId const& id, unsigned state) {
  phyConfig(id)->phyConfigStateIs(static_cast<Interface::PhyConfigState>(state));
}

void Switch::flap(Tarn::IntfId const& id, std::initializer_list<double> times) {
  for (double const time : times) {
    clock.secondsIs(time);
    linkIs(id, 2);
    linkIs(id, 1);
  }
}

void Switch::start() {
  (void)root->linkFlapSmIs(activity, configDir, statusDir, errdisableConfig, config, causeStatus,
                           causeName);
}

LinkFlap::LinkFlapIntfSm* Switch::intfSm(Tarn::IntfId const& id) const {
  if (!root || !root->linkFlapSm()) return nullptr;
  return root->linkFlapSm()->linkFlapIntfSm(id).get();
}

LinkFlap::LinkFlapProfileSm* Switch::profileSm(Tarn::IntfId const& id, char const* profile) const {
  auto const* const sm = intfSm(id);
  return sm == nullptr ? nullptr : sm->linkFlapProfileSm(profile).get();
}

std::vector<std::string> Switch::profiles(Tarn::IntfId const& id) const {
  std::vector<std::string> names;
  if (auto const* const sm = intfSm(id))
    for (auto const& profileSm : sm->linkFlapProfileSm())
      names.emplace_back(profileSm.profileName().view());
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<Tarn::IntfId> Switch::walkOrder() const {
  std::vector<Tarn::IntfId> order;
  for (auto const& member : statusDir->intfStatus())
    order.push_back(member.key());
  return order;
}

std::optional<double> Switch::errdisabledAt(Tarn::IntfId const& id) const {
  if (!causeStatus->intfStatus().has(id)) return std::nullopt;
  return causeStatus->intfStatus(id);
}

void Switch::causeStatusIs(Vek::Ptr<Errdisable::CauseStatus> const& object) {
  causeStatus = object;
  recorder_->notifierIs(object);
  recorder_->isRegisteredNotifieeIs(true);
}

std::vector<std::string> Switch::takeWrites() {
  return std::exchange(writes_, {});
}

std::vector<TraceLine> Switch::takeTraces() {
  return std::exchange(traces_, {});
}

std::vector<std::string> Switch::takeMessages() {
  std::vector<std::string> messages;
  for (TraceLine& line : traces_)
    messages.push_back(std::move(line.message));
  traces_.clear();
  return messages;
}

std::vector<Vek::CallbackFailure> Switch::takeFailures() {
  return std::exchange(failures_, {});
}

std::size_t Switch::traced(std::string_view function) const {
  return static_cast<std::size_t>(
      std::count_if(traces_.begin(), traces_.end(),
                    [&](TraceLine const& line) { return line.function == function; }));
}

std::vector<double> times(LinkFlap::LinkFlapProfileSm const& sm) {
  std::vector<double> all;
  for (auto entry = sm.linkFlapTimeStamp().iterator(); entry; ++entry)
    all.push_back(entry->time());
  return all;
}

Counters counters(LinkFlap::LinkFlapProfileSm const& sm) {
  return {sm.curFlaps(), sm.curIntervals(), sm.curViolations()};
}
