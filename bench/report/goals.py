"""What is measured, and what is aimed at: the rows of the table."""

from dataclasses import dataclass, field

PEERS = {
    "vector": "bare vector of pointers",
    "hand": "hand-written, by number",
    "hand-by-name": "hand-written, by name",
    "sigc": "libsigc++",
    "boost": "Boost.Signals2",
    "boost-unlocked": "Boost.Signals2, no mutex",
    "unordered_map": "std::unordered_map",
    "intrusive": "boost::intrusive_ptr",
    "flag": "bool test, increment",
    "spdlog": "spdlog::debug",
    "spdlog-logger": "spdlog logger->debug",
    "asio": "asio::post",
    "asio-single": "asio::post, one thread",
    "libmnl": "plain libmnl loop",
    "qt": "QObject property",
    "direct": "direct call",
}


def most(factor):
    """Ours takes at most `factor` times what the peer takes."""
    return ("most", factor)


def faster(factor):
    """Ours is at least `factor` times faster than the peer."""
    return ("faster", factor)


@dataclass
class Versus:
    """Ours against peers, by time: the subjects CASE/KEY/SIDE."""

    case: int
    key: str
    title: str
    goals: dict  # peer: most(), faster(), or None where nothing is aimed at
    counted: bool = True
    million: bool = False
    costly: bool = False  # to prepare, so it is measured for a shorter time


@dataclass
class Flat:
    """Instructions of ours, which may not depend on the size: the subjects CASE/KEY/SIZE."""

    case: int
    key: str
    title: str
    sizes: list
    tolerance: float


@dataclass
class Memory:
    """Bytes for each interface."""

    case: int
    profiles: int
    title: str
    most: float
    key: str = field(default="memory")


@dataclass
class LinkMessages:
    """The messages of a real kernel."""

    case: int
    title: str
    goals: dict


MILLION = 1000000
HUNDREDS = [1000, 100000, MILLION]


def flap_goals(number, name, sigc, boost):
    return {"hand": most(number), "hand-by-name": most(name), "sigc": faster(sigc),
            "boost": faster(boost)}


ROWS = [
    Versus(1, "1", "change told to 1 watcher",
           {"vector": most(1.6), "sigc": faster(8), "boost": faster(12), "boost-unlocked": None}),
    Versus(1, "1000", "change told to 1,000 watchers",
           {"vector": most(1.4), "sigc": faster(1.8), "boost": faster(6), "boost-unlocked": None}),
    Flat(2, "turn", "detach and attach, watchers attached", [1, 1000, 100000], 0.05),
    Versus(3, "64", "accepted flap, 1 profile, 64 interfaces", flap_goals(1.3, 1.3, 2.5, 5)),
    Versus(3, "4096", "accepted flap, 1 profile, 4,096 interfaces", flap_goals(1.3, 1.3, 2.5, 5)),
    Versus(3, "100000", "accepted flap, 1 profile, 100,000 interfaces",
           flap_goals(1.3, 1.3, 2.5, 5), counted=False),
    Versus(3, "1000000", "accepted flap, 1 profile, 1,000,000 interfaces",
           flap_goals(1.3, 1.3, 2.5, 5), counted=False, million=True),
    Versus(4, "64", "accepted flap, 4 profiles, 64 interfaces", flap_goals(1.6, 1.6, 1.5, 3)),
    Versus(4, "4096", "accepted flap, 4 profiles, 4,096 interfaces", flap_goals(1.6, 1.6, 1.5, 3)),
    Versus(5, "64", "ignored change, 1 profile, 64 interfaces", flap_goals(1.5, 1.5, 6, 12)),
    Versus(5, "4096", "ignored change, 1 profile, 4,096 interfaces", flap_goals(1.5, 1.5, 6, 12)),
    Versus(6, "1", "err-disable, 1 profile",
           {"hand": None, "sigc": faster(1), "boost": faster(2)}, costly=True),
    Versus(6, "4", "err-disable, 4 profiles",
           {"hand": None, "sigc": faster(1), "boost": faster(2)}, costly=True),
    Versus(7, "10", "ageing and replay, for each flap of 10",
           {"hand": most(2), "sigc": None, "boost": None}, costly=True),
    Versus(7, "100", "ageing and replay, for each flap of 100",
           {"hand": most(2), "sigc": None, "boost": None}, costly=True),
    Versus(7, "10000", "ageing and replay, for each flap of 10,000",
           {"hand": most(2), "sigc": None, "boost": None}, costly=True),
    Flat(7, "linear", "ageing and replay, each flap of", [100, 10000], 0.05),
    Memory(8, 1, "memory of an interface, 1 profile", 900),
    Memory(8, 2, "memory of an interface, 2 profiles", None),
    Memory(8, 4, "memory of an interface, 4 profiles", 2600),
    Memory(8, 8, "memory of an interface, 8 profiles", None),
    Flat(9, "admission", "admission to a running machine, interfaces", HUNDREDS, 0.05),
    Flat(9, "first-pass", "first pass over all interfaces", HUNDREDS, 0.05),
    Flat(9, "tear-down", "tear-down, interfaces", HUNDREDS, 0.05),
    Flat(10, "port", "one port goes and comes, of", [64, 100000], 0.02),
    Flat(10, "settings", "one interface gets and loses settings, of", [64, 100000], 0.02),
    Flat(10, "switch", "one interface is switched off and on, of", [64, 100000], 0.02),
    Flat(10, "profiles", "one interface's profile list changes twice, of", [64, 100000], 0.02),
    Flat(11, "global", "global values change, for each of", [1000, 100000], 0.05),
    Flat(11, "default-profile", "default profile comes and goes, for each of", [1000, 100000],
         0.05),
    Flat(11, "profile-values", "a default profile's values change, for each of", [1000, 100000],
         0.05),
    Flat(11, "cause", "cause switched off and on, for each of", [1000, 100000], 0.05),
    *[Versus(12, f"{what}-{size}", f"keyed collection, {what}, {size:,} members",
             {"unordered_map": goal})
      for what, goal in [("look-up", most(1)), ("insert", faster(2)), ("erase", faster(2)),
                         ("walk", most(1))]
      for size in (64, 4096, 100000)],
    Versus(13, "plain", "counted pointer, copy and drop, plain", {"intrusive": most(1.5)}),
    Versus(13, "plain-boundary", "the same, handed to a shared library", {"intrusive": most(1.5)}),
    Versus(13, "atomic", "counted pointer, copy and drop, atomic", {"intrusive": most(1.3)}),
    Versus(13, "atomic-boundary", "the same, handed to a shared library",
           {"intrusive": most(1.3)}),
    Versus(14, "disabled", "disabled trace point",
           {"flag": most(1.2), "spdlog": faster(15), "spdlog-logger": faster(15)}),
    Versus(15, "deferred", "deferred notification, post and deliver, 64 pending",
           {"asio": faster(10), "asio-single": faster(10)}),
    Versus(15, "changes", "the same, with the change of the attribute",
           {"asio": None, "asio-single": None}),
    LinkMessages(16, "link message of the kernel", {"libmnl": most(1)}),
    Versus(17, "set-by-name", "attribute set by name", {"qt": most(3)}),
    Versus(17, "get-by-name", "attribute read by name", {"qt": most(3)}),
    Versus(17, "set-by-id", "attribute set by identifier", {"direct": most(10)}),
    Versus(17, "get-by-id", "attribute read by identifier", {"direct": most(10)}),
]
