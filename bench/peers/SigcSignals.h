#pragma once

#include <sigc++/sigc++.h>

namespace Bench {

/// libsigc++: what connects is trackable, so that its connections end with it.
struct SigcSignals {
  template <typename Signature>
  using Signal = sigc::signal<Signature>;

  using Receiver = sigc::trackable;

  template <typename Signature, typename T, typename... Arguments>
  static void connect(Signal<Signature>& signal, T& receiver, void (T::*method)(Arguments...)) {
    signal.connect(sigc::mem_fun(receiver, method));
  }
};

}  // namespace Bench
