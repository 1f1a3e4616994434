#pragma once

#include <boost/signals2/signal.hpp>
#include <forward_list>

namespace Bench {

/// Boost.Signals2 as it comes: what connects holds its connections, which end with it.
struct BoostSignals {
  template <typename Signature>
  using Signal = boost::signals2::signal<Signature>;

  class Receiver {
   public:
    Receiver() = default;
    Receiver(Receiver const&) = delete;
    Receiver& operator=(Receiver const&) = delete;

   private:
    friend struct BoostSignals;
    std::forward_list<boost::signals2::scoped_connection> connections_;
  };

  template <typename Signature, typename T, typename... Arguments>
  static void connect(Signal<Signature>& signal, T& receiver, void (T::*method)(Arguments...)) {
    static_cast<Receiver&>(receiver).connections_.emplace_front(signal.connect(
        [&receiver, method](Arguments... arguments) { (receiver.*method)(arguments...); }));
  }
};

}  // namespace Bench
