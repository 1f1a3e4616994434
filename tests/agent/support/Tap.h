#pragma once

#include <cerrno>
#include <fcntl.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <string>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

/// A tap port, whose carrier its owner sets at will. Unlike those of a veth port, its changes are
/// announced at most once a second.
class Tap {
 public:
  explicit Tap(std::string const& name) : descriptor_{::open("/dev/net/tun", O_RDWR | O_CLOEXEC)} {
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    request.ifr_flags = IFF_TAP | IFF_NO_PI;
    made_ = descriptor_ >= 0 && ::ioctl(descriptor_, TUNSETIFF, &request) == 0;
  }
  ~Tap() { ::close(descriptor_); }
  Tap(Tap const&) = delete;
  Tap& operator=(Tap const&) = delete;

  bool made() const { return made_; }
  void carrierIs(bool on) const {
    int value = on ? 1 : 0;
    if (::ioctl(descriptor_, TUNSETCARRIER, &value) < 0)
      throw std::system_error(errno, std::generic_category(), "carrier of a tap interface");
  }
  void flap(int count) const {
    for (int flap = 0; flap < count; ++flap) {
      carrierIs(false);
      carrierIs(true);
    }
  }

 private:
  int descriptor_;
  bool made_{false};
};
