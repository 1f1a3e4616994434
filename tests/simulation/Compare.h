#pragma once

#include <string>

#include "tests/simulation/Random.h"
#include "tests/simulation/World.h"

namespace Simulation {

/// Holds the library against the model. What it has compared goes into the digest, as the library
/// had it. The first difference is kept; nothing is compared after it.
class Comparison {
 public:
  Comparison(World& world, Model::System& model) : world_{world}, model_{model} {}

  /// What both let out during the event.
  void outcomes();
  /// The machines of one interface.
  void interface(int intf);
  /// The machines of all interfaces.
  void machines();
  /// Everything: also the inputs, the flags and what each machine holds.
  void everything();

  std::string const& difference() const { return difference_; }
  std::uint64_t digest() const { return digest_.value(); }
  /// How many values were held against each other.
  std::uint64_t compared() const { return compared_; }

 private:
  enum class Depth { ends, whole };

  void machine(LinkFlap::LinkFlapSm const* library, Model::TopSm* model, bool deep);
  void intfSm(LinkFlap::LinkFlapSm const& owner, Model::TopSm& model, int intf, bool deep);
  void profileSm(LinkFlap::LinkFlapProfileSm const& library, Model::ProfileSm const& model,
                 Depth depth);
  void heldBy(LinkFlap::LinkFlapSm const& library, Model::TopSm const& model);
  void heldBy(LinkFlap::LinkFlapIntfSm const& library, Model::IntfSm const& model);
  void heldBy(LinkFlap::LinkFlapProfileSm const& library, Model::ProfileSm const& model);
  void inputs();
  void records();

  void same(char const* what, std::uint64_t library, std::uint64_t model) {
    digest_.add(library);
    ++compared_;
    if (library != model) [[unlikely]]
      differ(what, library, model);
  }
  void sameTime(char const* what, double library, double model);
  void sameText(char const* what, std::string const& library, std::string const& model);
  void samePeer(char const* what, void const* library, Model::Peer const* model);
  void differ(char const* what, std::uint64_t library, std::uint64_t model);
  void differs(std::string const& text);

  World& world_;
  Model::System& model_;
  Digest digest_;
  std::uint64_t compared_{0};
  int intf_{-1};  // what is being compared, for the text of a difference; -1: no one in particular
  int name_{-1};
  std::string difference_;
};

}  // namespace Simulation
