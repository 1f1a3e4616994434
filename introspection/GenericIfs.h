#pragma once

#include <memory>

#include "runtime/vek/GenericIf.h"

#include "statemachines/LinkFlapSm.h"

#pragma GCC visibility push(default)

// The views by name of the four machine types. What they expose stands in the types' records; all
// logic is the runtime's.

namespace LinkFlap {

class LinkFlapProfileSm::GenericIf_ final : public Vek::GenericIfPtrInterface {
 public:
  GenericIf_(Ptr const& object, bool readOnly) : GenericIfPtrInterface{object, readOnly} {}
  std::unique_ptr<GenericIf> clone() const override;
};

class LinkFlapIntfSm::GenericIf_ final : public Vek::GenericIfPtrInterface {
 public:
  GenericIf_(Ptr const& object, bool readOnly) : GenericIfPtrInterface{object, readOnly} {}
  std::unique_ptr<GenericIf> clone() const override;
};

class LinkFlapSm::GenericIf_ final : public Vek::GenericIfPtrInterface {
 public:
  GenericIf_(Ptr const& object, bool readOnly) : GenericIfPtrInterface{object, readOnly} {}
  std::unique_ptr<GenericIf> clone() const override;
};

/// The view of a Root, through which a tool can also watch it: while a `GenericIf_Adapter_` is
/// attached, `onLinkFlapSm` is called whenever the machine was set or cleared.
class Root::GenericIf_ : public Vek::GenericIfEntity {
 public:
  class GenericIf_Adapter_;

  GenericIf_(Ptr const& object, bool readOnly) : GenericIfEntity{object, readOnly} {}
  std::unique_ptr<GenericIf> clone() const override;

  virtual void onLinkFlapSm() {}
  virtual void onZeroReferences() {}
  /// A notification that this view was told through its adapter threw.
  virtual void onNotificationException(Vek::AttributeId /*id*/) {}

  /// Attaches an adapter that tells `view` of changes of `root`. It does not hold the view: whoever
  /// drops the view drops the adapter first.
  static Vek::Ptr<GenericIf_Adapter_> GenericIf_Adapter_Is(Ptr const& root, GenericIf_* view);
};

class Root::GenericIf_::GenericIf_Adapter_ final : public Root::NotifieeConst {
 public:
  explicit GenericIf_Adapter_(GenericIf_* view) noexcept : view_{view} {}

  void onLinkFlapSm() override;
  void onZeroReferences() override;
  void onNotificationException(Vek::AttributeId id) override;
  /// A zombie adapter tells nothing.
  void vekDoZombieReactors(bool on);

 private:
  ~GenericIf_Adapter_() override = default;

  GenericIf_* view_;
};

}  // namespace LinkFlap

#pragma GCC visibility pop
