#include "agent/LinkFeed.h"

#include <cerrno>
#include <libmnl/libmnl.h>
#include <linux/netlink.h>
#include <system_error>

#include "agent/LinkMessage.h"
#include "agent/LinkMonitor.h"

namespace LinkFlapd {

namespace {

/// The error number that an NLMSG_ERROR or NLMSG_DONE message carries; 0 for none.
int errorIn(nlmsghdr const& message) {
  if (message.nlmsg_len < mnl_nlmsg_size(sizeof(int))) return 0;
  int const code = *static_cast<int const*>(mnl_nlmsg_get_payload(&message));
  return code < 0 ? -code : code;
}

/// Whether a dump that failed so is worth another try.
bool passes(int error) {
  return error == EBUSY || error == EAGAIN || error == EINTR || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

void LinkFeed::dumpRequested(std::uint32_t sequence, std::uint32_t portId) {
  sequence_ = sequence;
  portId_ = portId;
  running_ = true;
  wanted_ = false;
  disturbed_ = false;
  monitor_.dumpBegins();
}

void LinkFeed::overrun() {
  monitor_.messagesLost();
  wanted_ = true;
  disturbed_ = true;
}

void LinkFeed::received(void const* data, std::size_t size) {
  int left = static_cast<int>(size);
  auto const* message = static_cast<nlmsghdr const*>(data);
  for (; mnl_nlmsg_ok(message, left); message = mnl_nlmsg_next(message, &left)) {
    bool const reply = running_ && message->nlmsg_seq == sequence_ && message->nlmsg_pid == portId_;
    if (reply && (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0) disturbed_ = true;
    if (message->nlmsg_type == NLMSG_OVERRUN) {
      overrun();
    } else if (message->nlmsg_type == NLMSG_DONE || message->nlmsg_type == NLMSG_ERROR) {
      if (reply) dumpDone(errorIn(*message));
    } else if (auto const parsed = parseLinkMessage(*message)) {
      if (parsed->removed)
        monitor_.linkDel(parsed->link.index);
      else if (reply)
        monitor_.dumpLinkIs(parsed->link);
      else
        monitor_.linkIs(parsed->link);
    }
  }
}

void LinkFeed::dumpDone(int error) {
  if (error != 0 && !passes(error))
    throw std::system_error(error, std::generic_category(), "the kernel does not list its links");
  running_ = false;
  if (error != 0) disturbed_ = true;
  if (disturbed_) wanted_ = true;
  monitor_.dumpEnds(!disturbed_);
}

}  // namespace LinkFlapd
