#include "tests/agent/support/PortRecorder.h"

#include <utility>

namespace {

std::string text(Tarn::IntfId const& id) {
  return std::string{id.name().view()};
}

}  // namespace

class PortRecorder::ConfigWatcher final : public Interface::AllEthPhyIntfConfigDir::NotifieeConst {
 public:
  explicit ConfigWatcher(PortRecorder& recorder) : recorder_{recorder} {}
  void onIntfConfig(Tarn::IntfId id) override { recorder_.configChanged(id); }

 private:
  PortRecorder& recorder_;
};

class PortRecorder::StatusWatcher final : public Interface::AllEthPhyIntfStatusDir::NotifieeConst {
 public:
  explicit StatusWatcher(PortRecorder& recorder) : recorder_{recorder} {}
  void onIntfStatus(Tarn::IntfId id) override { recorder_.statusChanged(id); }

 private:
  PortRecorder& recorder_;
};

class PortRecorder::PortWatcher final : public Interface::EthPhyIntfStatus::NotifieeConst {
 public:
  PortWatcher(PortRecorder& recorder, Vek::Ptr<Interface::EthPhyIntfStatus const> status)
      : recorder_{recorder}, status_{std::move(status)} {
    notifierIs(status_);
    isRegisteredNotifieeIs(true);
  }
  void onRawLinkStatus() override { recorder_.linkChanged(*status_); }

 private:
  PortRecorder& recorder_;
  Vek::Ptr<Interface::EthPhyIntfStatus const> status_;
};

PortRecorder::PortRecorder(LinkFlapd::PortPublisher const& publisher)
    : configDir_{publisher.configDir()},
      statusDir_{publisher.statusDir()},
      configWatcher_{Vek::make<ConfigWatcher>(*this)},
      statusWatcher_{Vek::make<StatusWatcher>(*this)} {
  configWatcher_->notifierIs(configDir_);
  configWatcher_->isRegisteredNotifieeIs(true);
  statusWatcher_->notifierIs(statusDir_);
  statusWatcher_->isRegisteredNotifieeIs(true);
}

PortRecorder::~PortRecorder() = default;

std::vector<std::string> PortRecorder::take() {
  return std::exchange(events_, {});
}

unsigned PortRecorder::flaps(std::string const& name) const {
  auto const found = flaps_.find(name);
  return found == flaps_.end() ? 0 : found->second;
}

void PortRecorder::configChanged(Tarn::IntfId const& id) {
  bool const present = configDir_->intfConfig().has(id);
  events_.push_back((present ? "+config " : "-config ") + text(id));
  if (!present && statusDir_->intfStatus().has(id))
    events_.push_back(text(id) + " WITHOUT CONFIGURATION");
}

void PortRecorder::statusChanged(Tarn::IntfId const& id) {
  auto const status = statusDir_->intfStatus(id);
  events_.push_back((status ? "+status " : "-status ") + text(id));
  if (status && !configDir_->intfConfig(id)) events_.push_back(text(id) + " WITHOUT CONFIGURATION");
  if (status)
    ports_[id] = Vek::make<PortWatcher>(*this, status);
  else
    ports_.erase(id);
}

void PortRecorder::linkChanged(Interface::EthPhyIntfStatus const& status) {
  std::string const name = text(status.intfId());
  if (status.rawLinkStatus() != Interface::RawLinkStatus::up) {
    events_.push_back(name + " down");
    return;
  }
  bool const counts = configDir_->intfConfig(status.intfId())->phyConfigState() !=
                      Interface::PhyConfigState::inProgress;
  events_.push_back(name + (counts ? " flap" : " up"));
  if (counts) ++flaps_[name];
}
