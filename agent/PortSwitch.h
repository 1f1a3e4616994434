#pragma once

namespace LinkFlapd {

/// The means to shut a port.
class PortSwitch {
 public:
  virtual ~PortSwitch() = default;

  /// Sets the interface administratively down; done when it returns. Throws `std::system_error`.
  virtual void shut(int index) = 0;
};

/// The real one: asks the kernel over rtnetlink.
class KernelPortSwitch : public PortSwitch {
 public:
  void shut(int index) override;

  /// Throws `std::system_error` unless this process may set interfaces up and down. Changes
  /// nothing.
  static void checkPermission();
};

}  // namespace LinkFlapd
