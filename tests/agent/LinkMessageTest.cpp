#include <cstring>
#include <gtest/gtest.h>
#include <linux/if_arp.h>
#include <sys/socket.h>

#include "agent/InterfaceFilter.h"
#include "agent/LinkMessage.h"

#include "tests/agent/support/Wire.h"

namespace {

using LinkFlapd::InterfaceFilter;
using LinkFlapd::LinkMessage;
using LinkFlapd::LinkState;

std::optional<LinkMessage> parse(Wire::Bytes const& bytes) {
  return LinkFlapd::parseLinkMessage(*reinterpret_cast<nlmsghdr const*>(bytes.data()));
}

std::optional<LinkMessage> parse(Wire::Link const& link, Wire::Envelope const& envelope = {}) {
  return parse(Wire::message(link, envelope));
}

TEST(ParseLinkMessage, ReadsWhatMattersOfALink) {
  auto const message = parse({.index = 7, .name = "et7", .up = true, .carrier = true, .count = 12});
  ASSERT_TRUE(message);
  EXPECT_FALSE(message->removed);
  EXPECT_EQ(message->link.index, 7);
  EXPECT_EQ(message->link.name, "et7");
  EXPECT_EQ(message->link.hardwareType, ARPHRD_ETHER);
  EXPECT_EQ(message->link.kind, "");
  EXPECT_TRUE(message->link.adminUp);
  EXPECT_TRUE(message->link.carrier);
  EXPECT_EQ(message->link.carrierUpCount, 12U);
}

TEST(ParseLinkMessage, TakesCarrierFromItsAttributeAndNotFromFlags) {
  EXPECT_FALSE(parse(Wire::Link{.carrier = false, .lowerUp = true})->link.carrier);
  EXPECT_TRUE(parse(Wire::Link{.carrier = true, .lowerUp = false})->link.carrier);
}

TEST(ParseLinkMessage, TakesCarrierFromTheFlagWithoutTheAttribute) {
  EXPECT_TRUE(parse(Wire::Link{.carrier = {}, .lowerUp = true})->link.carrier);
  EXPECT_FALSE(parse(Wire::Link{.carrier = {}, .lowerUp = false})->link.carrier);
}

TEST(ParseLinkMessage, LeavesTheCounterOpenWhereTheKernelHasNone) {
  EXPECT_EQ(parse(Wire::Link{.count = {}})->link.carrierUpCount, std::nullopt);
}

TEST(ParseLinkMessage, TellsTheEndOfALink) {
  auto const message = parse(Wire::Link{.index = 9}, {.type = RTM_DELLINK});
  ASSERT_TRUE(message);
  EXPECT_TRUE(message->removed);
  EXPECT_EQ(message->link.index, 9);
}

TEST(ParseLinkMessage, IgnoresOtherFamilies) {
  EXPECT_FALSE(parse(Wire::Link{}, {.type = RTM_NEWLINK, .family = AF_BRIDGE}));
  EXPECT_FALSE(parse(Wire::Link{}, {.type = RTM_DELLINK, .family = AF_BRIDGE}));
  EXPECT_FALSE(parse(Wire::Link{}, {.type = RTM_NEWLINK, .family = AF_INET6}));
}

TEST(ParseLinkMessage, IgnoresOtherTypes) {
  EXPECT_FALSE(parse(Wire::Link{}, {.type = RTM_NEWADDR}));
  EXPECT_FALSE(parse(Wire::Link{}, {.type = RTM_GETLINK}));
}

TEST(ParseLinkMessage, IgnoresWirelessEvents) {
  EXPECT_FALSE(parse(Wire::Link{.carrier = {}, .count = {}, .wireless = true}));
}

TEST(ParseLinkMessage, IgnoresALinkWithoutAName) {
  EXPECT_FALSE(parse(Wire::Link{.name = ""}));
}

TEST(ParseLinkMessage, IgnoresAMessageThatIsTooShort) {
  Wire::Bytes bytes = Wire::message({});
  reinterpret_cast<nlmsghdr*>(bytes.data())->nlmsg_len = NLMSG_LENGTH(sizeof(ifinfomsg)) - 1;
  EXPECT_FALSE(parse(bytes));
}

// Every length that a message can be cut to: no read beyond it and its padding (the sanitizers
// watch), no link from less than its name.
TEST(ParseLinkMessage, SurvivesACutAtEveryByte) {
  Wire::Bytes const whole = Wire::message({.kind = "veth", .memberOf = "bridge"});
  for (std::size_t length = sizeof(nlmsghdr); length < whole.size(); ++length) {
    Wire::Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    cut.resize(NLMSG_ALIGN(length), 'x');
    reinterpret_cast<nlmsghdr*>(cut.data())->nlmsg_len = static_cast<std::uint32_t>(length);
    auto const message = parse(cut);
    EXPECT_EQ(message ? message->link.name : "et1", "et1") << length;
  }
}

TEST(ParseLinkMessage, IgnoresAttributesOfTheWrongSize) {
  Wire::Bytes bytes = Wire::message({.carrier = true, .count = {}, .lowerUp = false});
  // The carrier attribute stands last; make it claim to have no content.
  auto* const carrier = reinterpret_cast<nlattr*>(bytes.data() + bytes.size() - NLA_HDRLEN - 4);
  ASSERT_EQ(carrier->nla_type, IFLA_CARRIER);
  carrier->nla_len = NLA_HDRLEN;
  auto const message = parse(bytes);
  ASSERT_TRUE(message);
  EXPECT_FALSE(message->link.carrier);
}

TEST(ParseLinkMessage, TellsTheKindOfAVirtualLink) {
  EXPECT_EQ(parse(Wire::Link{.kind = "veth"})->link.kind, "veth");
}

TEST(ParseLinkMessage, FindsNoKindInHardwareThatBelongsToABridge) {
  EXPECT_EQ(parse(Wire::Link{.memberOf = "bridge"})->link.kind, "");
}

LinkState link(std::string const& name, std::string const& kind = {},
               unsigned hardwareType = ARPHRD_ETHER) {
  LinkState state;
  state.name = name;
  state.kind = kind;
  state.hardwareType = hardwareType;
  return state;
}

TEST(InterfaceFilter, WithoutPatternsTakesPhysicalEthernetOnly) {
  InterfaceFilter const filter;
  EXPECT_TRUE(filter.matches(link("et1")));
  EXPECT_FALSE(filter.matches(link("veth0", "veth")));
  EXPECT_FALSE(filter.matches(link("lo", "", ARPHRD_LOOPBACK)));
  EXPECT_FALSE(filter.matches(link("ib0", "", ARPHRD_INFINIBAND)));
}

TEST(InterfaceFilter, TakesWhateverEthernetAPatternNames) {
  InterfaceFilter const filter{{"et[12]", "veth0"}};
  EXPECT_TRUE(filter.matches(link("et1")));
  EXPECT_TRUE(filter.matches(link("et2", "veth")));
  EXPECT_TRUE(filter.matches(link("veth0", "veth")));
  EXPECT_FALSE(filter.matches(link("et3")));
  EXPECT_FALSE(filter.matches(link("veth01", "veth")));
}

TEST(InterfaceFilter, NeverTakesALoopbackOrATunnel) {
  InterfaceFilter const filter{{"*"}};
  EXPECT_FALSE(filter.matches(link("lo", "", ARPHRD_LOOPBACK)));
  EXPECT_FALSE(filter.matches(link("sit0", "sit", ARPHRD_SIT)));
  EXPECT_TRUE(filter.matches(link("br0", "bridge")));
}

}  // namespace
