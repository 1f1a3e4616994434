#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Real links of the kernel, in a network namespace of this process's own.
namespace PrivateNetwork {

/// Makes namespaces possible: enters a user namespace if it takes one. Call it once, before
/// anything else runs. Why not, when the machine does not permit them; else nothing.
std::optional<std::string> permit();

/// Enters a fresh, empty network namespace; the one left goes when its last process has gone.
/// Throws `std::system_error`.
void enter();

/// Runs "ip ARGUMENTS". Throws `std::runtime_error` when it fails.
void ip(std::string const& arguments);
/// Runs several such commands, one to a line, in one process, so that they follow each other as
/// fast as the kernel takes them.
void ipBatch(std::string const& commands);

/// Makes a veth pair and sets both ends up; returns when both have carrier.
void wire(std::string const& port, std::string const& farEnd);

/// What the kernel says of an interface. Throws `std::system_error` when there is none.
struct Link {
  bool adminUp;
  bool carrier;
  std::uint32_t carrierUpCount;
};
Link link(std::string const& name);

}  // namespace PrivateNetwork
