#pragma once

#include <boost/signals2/dummy_mutex.hpp>
#include <boost/signals2/signal.hpp>
#include <boost/signals2/signal_type.hpp>
#include <forward_list>

namespace Bench {

/// Boost.Signals2: what connects holds its connections, which end with it. `Mutex`: what guards a
/// signal.
template <typename Mutex>
struct BoostSignalsOn {
  template <typename Signature>
  using Signal =
      typename boost::signals2::signal_type<Signature,
                                            boost::signals2::keywords::mutex_type<Mutex>>::type;

  class Receiver {
   public:
    Receiver() = default;
    Receiver(Receiver const&) = delete;
    Receiver& operator=(Receiver const&) = delete;

   private:
    friend struct BoostSignalsOn;
    std::forward_list<boost::signals2::scoped_connection> connections_;
  };

  template <typename AnySignal, typename T, typename... Arguments>
  static void connect(AnySignal& signal, T& receiver, void (T::*method)(Arguments...)) {
    static_cast<Receiver&>(receiver).connections_.emplace_front(signal.connect(
        [&receiver, method](Arguments... arguments) { (receiver.*method)(arguments...); }));
  }
};

/// As it comes.
using BoostSignals = BoostSignalsOn<boost::signals2::mutex>;
/// For a program of one thread.
using UnlockedBoostSignals = BoostSignalsOn<boost::signals2::dummy_mutex>;

}  // namespace Bench
