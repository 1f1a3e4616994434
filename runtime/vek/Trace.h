#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <iosfwd>
#include <sstream>
#include <string_view>
#include <type_traits>

#pragma GCC visibility push(default)

namespace Vek {

/// A pointer to a stream, of which the trace facilities know whether it is null.
class CoverageStream {
 public:
  CoverageStream& operator=(std::ostream* stream) noexcept;
  operator std::ostream*() const noexcept { return stream_; }

 private:
  std::ostream* stream_{nullptr};
};

/// While not null, every trace message is built and also written here, one to a line, whether or
/// not its level is enabled. Ownership: the host's, which clears it before the stream goes.
extern CoverageStream coverageStream_;

/// A trace facility: which of its levels are enabled, and how often its trace points were passed.
/// Constant-initialised, so a trace point may be passed before any other static is ready.
class TraceHandle {
 public:
  static constexpr int kLevels{10};

  /// `enabled`: whether all levels are enabled from the start.
  constexpr TraceHandle(char const* name, bool enabled) noexcept
      : enabled_{enabled}, active_{enabled}, name_{name} {
    for (bool& level : levels_)
      level = enabled;
  }

  /// Makes a facility known, for its whole life, to whoever sets the coverage stream. Each facility
  /// has one, beside it.
  class Registration {
   public:
    explicit Registration(TraceHandle& facility) noexcept;
    ~Registration();
    Registration(Registration const&) = delete;
    Registration& operator=(Registration const&) = delete;

   private:
    friend class CoverageStream;
    TraceHandle& facility_;
    Registration* next_;
  };

  char const* name() const noexcept { return name_; }
  /// Whether any level is enabled.
  bool enabled() const noexcept { return enabled_; }
  bool level(int level) const noexcept {
    return level >= 0 && level < kLevels && levels_[index(level)];
  }
  /// Enables or disables one level, 0 to 9. Throws `Vek::RangeException` for another number.
  void levelIs(int level, bool on);

  /// How often trace points were passed, see `hit`.
  std::uint64_t hits() const noexcept { return hits_; }

  /// Whether anybody may want a message: a level is enabled, or there is a coverage stream.
  bool active() const noexcept { return active_; }
  /// Counts the passing of trace points while the facility is not active.
  void pass(std::uint32_t points = 1) noexcept { hits_ += points; }
  /// Counts the passing of a trace point and tells whether its level is enabled.
  ///
  /// Deliberate: it counts 2 when the facility is enabled and 1 when it is not, so that the counter
  /// tells the two apart.
  bool hit(int level) noexcept {
    if (!enabled_) {
      ++hits_;
      return false;
    }
    hits_ += 2;
    return levels_[index(level)];
  }

 private:
  friend class CoverageStream;
  static constexpr std::size_t index(int level) noexcept { return static_cast<std::size_t>(level); }

  std::uint64_t hits_{0};
  bool enabled_;
  bool active_;
  char const* name_;
  std::array<bool, kLevels> levels_{};
};

/// One trace message on its way to the sink; the texts are valid during the call only.
struct TraceRecord {
  std::string_view facility;
  std::string_view file;  ///< "<unknown>": the library does not tell tools where it was built
  std::string_view source;
  std::string_view function;
  std::string_view message;
  int level;
  int line;
  bool levelFlag;  ///< whether the level is enabled; a sink is given enabled messages only
};

using TraceSink = std::function<void(TraceRecord const&)>;

/// Puts `sink` in place of the present one and returns that; an empty one stands for the default,
/// which writes a line to standard error. Process-wide; call it on the activity thread.
/// An exception of a sink is dropped: tracing never changes what the traced code does.
TraceSink traceSinkIs(TraceSink sink);

/// Hands a message to the sink if `levelFlag` is set, and to the coverage stream if there is one.
void traceHelper(TraceHandle const& facility, char const* file, std::stringstream& message,
                 int level, bool levelFlag, char const* source, int line, char const* function);

/// One trace point: where it stands in the source and at which level it speaks.
///
///     Trace::handleProfileList(this, "::handleProfileList(", profileName, ")");
///
/// The pieces are references; nothing is formatted unless the level (or coverage) is on. Wrap a
/// piece that is costly to compute in a lambda and it is not even computed.
struct TracePoint {
  int level;
  int line;
  char const* function;
  char const* source;
  TraceHandle& facility;

  template <typename... Pieces>
  void operator()(Pieces const&... pieces) const {
    if (!facility.active()) [[likely]] {
      facility.pass();
      return;
    }
    emit<Handed<Pieces>...>(pieces...);
  }

 private:
  /// How a piece goes on to `emit`: by value where it can, so that it need not be put into memory,
  /// where it would have an address, before it is known whether anybody listens.
  template <typename Piece>
  using Handed = std::conditional_t<std::is_scalar_v<Piece>, Piece, Piece const&>;

  template <typename... Pieces>
  [[gnu::cold, gnu::noinline]] void emit(Pieces... pieces) const {
    bool const levelFlag = facility.hit(level);
    if (!levelFlag && coverageStream_ == nullptr) return;
    // Out of memory, or a sink that throws: the message is lost, the traced work goes on.
    try {
      std::stringstream message;
      message.imbue(std::locale::classic());
      message << std::setprecision(12);
      (put(message, pieces), ...);
      traceHelper(facility, "<unknown>", message, level, levelFlag, source, line, function);
    } catch (...) {
      lost();
    }
  }

  [[gnu::cold]] static void lost() noexcept;

  template <typename Piece>
  static void put(std::ostream& out, Piece const& piece) {
    if constexpr (std::is_invocable_v<Piece const&>)
      out << piece();
    else
      out << piece;
  }
};

}  // namespace Vek

#pragma GCC visibility pop
