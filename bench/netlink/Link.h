#pragma once

#include <libmnl/libmnl.h>

namespace Bench {

/// Switches one link of this network namespace administratively, through rtnetlink. Each change is
/// done, and announced to whoever listens, when the call returns.
class Link {
 public:
  /// Throws `std::system_error` when there is no such link, or no socket.
  explicit Link(char const* name);
  ~Link();
  Link(Link const&) = delete;
  Link& operator=(Link const&) = delete;

  void upIs(bool up);

 private:
  mnl_socket* socket_;
  int index_;
};

}  // namespace Bench
