#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"

// Counted objects of three kinds, and functions of a shared library of its own that take them by
// value, so that a copy goes in and is dropped inside.

namespace Bench {

class OurObject final : public Vek::PtrInterface {
 private:
  ~OurObject() override = default;
};

template <typename Counter>
class BoostObject : public boost::intrusive_ref_counter<BoostObject<Counter>, Counter> {
 public:
  virtual ~BoostObject() = default;
};

using PlainObject = BoostObject<boost::thread_unsafe_counter>;
using AtomicObject = BoostObject<boost::thread_safe_counter>;

void takeByValue(Vek::Ptr<OurObject> object);
void takeByValue(boost::intrusive_ptr<PlainObject> object);
void takeByValue(boost::intrusive_ptr<AtomicObject> object);

}  // namespace Bench
