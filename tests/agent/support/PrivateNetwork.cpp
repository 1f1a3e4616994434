#include "tests/agent/support/PrivateNetwork.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <sched.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include "tests/agent/support/Deadline.h"

namespace PrivateNetwork {

namespace {

void write(char const* path, std::string const& text) {
  int const file = ::open(path, O_WRONLY | O_CLOEXEC);
  bool const written =
      file >= 0 && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  if (file >= 0) ::close(file);
  if (!written) throw std::system_error(errno, std::generic_category(), path);
}

int take(nlattr const* attribute, void* data) {
  auto& result = *static_cast<Link*>(data);
  if (mnl_attr_get_type(attribute) == IFLA_CARRIER)
    result.carrier = mnl_attr_get_u8(attribute) != 0;
  if (mnl_attr_get_type(attribute) == IFLA_CARRIER_UP_COUNT)
    result.carrierUpCount = mnl_attr_get_u32(attribute);
  return MNL_CB_OK;
}

int takeLink(nlmsghdr const* message, void* data) {
  auto const* const info = static_cast<ifinfomsg const*>(mnl_nlmsg_get_payload(message));
  static_cast<Link*>(data)->adminUp = (info->ifi_flags & IFF_UP) != 0;
  return mnl_attr_parse(message, sizeof(ifinfomsg), take, data);
}

}  // namespace

std::optional<std::string> permit() {
  if (std::system("ip -V >/dev/null 2>&1") != 0) return "the program 'ip' is missing";
  try {
    if (::unshare(CLONE_NEWNET) < 0) {
      // The identifiers are read before the new namespace hides them.
      std::string const user = std::to_string(::getuid());
      std::string const group = std::to_string(::getgid());
      if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) < 0)
        return std::string{"no network namespace: "} + std::generic_category().message(errno);
      // As root of the user namespace, so that programs started from here keep their powers.
      write("/proc/self/setgroups", "deny");
      write("/proc/self/uid_map", "0 " + user + " 1");
      write("/proc/self/gid_map", "0 " + group + " 1");
    }
    ip("link add probe type veth peer name probed");
  } catch (std::exception const& error) {
    return std::string{"no veth links in a namespace: "} + error.what();
  }
  return std::nullopt;
}

void enter() {
  if (::unshare(CLONE_NEWNET) < 0)
    throw std::system_error(errno, std::generic_category(), "network namespace");
}

void ip(std::string const& arguments) {
  if (std::system(("ip " + arguments).c_str()) != 0)
    throw std::runtime_error("failed: ip " + arguments);
}

void ipBatch(std::string const& commands) {
  std::unique_ptr<FILE, int (*)(FILE*)> pipe{::popen("ip -batch -", "w"), ::pclose};
  if (!pipe || std::fwrite(commands.data(), 1, commands.size(), pipe.get()) != commands.size() ||
      ::pclose(pipe.release()) != 0)
    throw std::runtime_error("failed: ip -batch");
}

void wire(std::string const& port, std::string const& farEnd) {
  ip("link add name " + port + " type veth peer name " + farEnd);
  ip("link set " + farEnd + " up");
  ip("link set " + port + " up");
  if (!Deadline{}.reaches([&] { return link(port).carrier && link(farEnd).carrier; }))
    throw std::runtime_error("no carrier between " + port + " and " + farEnd);
}

Link link(std::string const& name) {
  std::unique_ptr<mnl_socket, int (*)(mnl_socket*)> const socket{mnl_socket_open(NETLINK_ROUTE),
                                                                 mnl_socket_close};
  alignas(nlmsghdr) std::array<char, 16384> buffer{};
  nlmsghdr* const request = mnl_nlmsg_put_header(buffer.data());
  request->nlmsg_type = RTM_GETLINK;
  request->nlmsg_flags = NLM_F_REQUEST;
  request->nlmsg_seq = 1;
  mnl_nlmsg_put_extra_header(request, sizeof(ifinfomsg));
  mnl_attr_put_strz(request, IFLA_IFNAME, name.c_str());
  Link result{};
  if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0 ||
      mnl_socket_sendto(socket.get(), request, request->nlmsg_len) < 0)
    throw std::system_error(errno, std::generic_category(), "rtnetlink");
  ssize_t const size = mnl_socket_recvfrom(socket.get(), buffer.data(), buffer.size());
  if (size < 0 || mnl_cb_run(buffer.data(), static_cast<std::size_t>(size), 1,
                             mnl_socket_get_portid(socket.get()), takeLink, &result) < 0)
    throw std::system_error(errno, std::generic_category(), name);
  return result;
}

}  // namespace PrivateNetwork
