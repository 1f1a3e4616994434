"""What is measured, and what is aimed at: the rows of the table."""

from dataclasses import dataclass, field

PEERS = {
    "vector": "bare vector of pointers",
    "hand": "hand-written, by number",
    "hand-by-name": "hand-written, by name",
    "sigc": "libsigc++",
    "boost": "Boost.Signals2",
    "unordered_map": "std::unordered_map",
    "intrusive": "boost::intrusive_ptr",
    "flag": "bool test, increment",
    "spdlog": "spdlog::debug",
    "spdlog-logger": "spdlog logger->debug",
    "asio": "asio::post",
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


@dataclass
class Flat:
    """Instructions of ours, which may not depend on the size: the subjects CASE/KEY/SIZE."""

    case: int
    key: str
    title: str
    sizes: list
    tolerance: float
    million: bool = False


@dataclass
class Memory:
    """Bytes for each interface."""

    case: int
    profiles: int
    title: str
    most: float
    key: str = field(default="memory")


def flap_goals(number, name, sigc, boost):
    return {"hand": most(number), "hand-by-name": most(name), "sigc": faster(sigc),
            "boost": faster(boost)}


ROWS = [
    Versus(1, "1", "change told to 1 watcher",
           {"vector": most(1.6), "sigc": faster(8), "boost": faster(12)}),
    Versus(1, "1000", "change told to 1,000 watchers",
           {"vector": most(1.4), "sigc": faster(1.8), "boost": faster(6)}),
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
    Memory(8, 1, "memory of an interface, 1 profile", 900),
    Memory(8, 2, "memory of an interface, 2 profiles", None),
    Memory(8, 4, "memory of an interface, 4 profiles", 2600),
    Memory(8, 8, "memory of an interface, 8 profiles", None),
    Versus(13, "plain", "counted pointer, copy and drop, plain", {"intrusive": most(1.5)}),
    Versus(13, "plain-boundary", "the same, handed to a shared library", {"intrusive": most(1.5)}),
    Versus(13, "atomic", "counted pointer, copy and drop, atomic", {"intrusive": most(1.3)}),
    Versus(13, "atomic-boundary", "the same, handed to a shared library",
           {"intrusive": most(1.3)}),
    Versus(14, "disabled", "disabled trace point",
           {"flag": most(1.2), "spdlog": faster(15), "spdlog-logger": faster(15)}),
]
