#pragma once

#include <utility>
#include <vector>

#include "tests/reliability/Life.h"

/// A tool's view of a Root, told of its changes.
struct Life::RootView {
  explicit RootView(LinkFlap::Root::Ptr const& viewed)
      : root{viewed},
        view{viewed, false},
        adapter{LinkFlap::Root::GenericIf_::GenericIf_Adapter_Is(viewed, &view)} {}

  LinkFlap::Root::Ptr root;
  LinkFlap::Root::GenericIf_ view;
  Vek::Ptr<LinkFlap::Root::GenericIf_::GenericIf_Adapter_> adapter;  // goes before the view
};

/// Takes out one of them, any; whoever it was may be destroyed by that.
template <typename T>
void dropOne(std::vector<T>& all, unsigned dice) {
  if (all.empty()) return;
  std::swap(all[dice % all.size()], all.back());
  T const last = std::move(all.back());
  all.pop_back();
}

template <typename T>
Vek::Ptr<T> oneOf(std::vector<Vek::Ptr<T>> const& all, unsigned dice) {
  return all.empty() ? Vek::Ptr<T>{} : all[dice % all.size()];
}
