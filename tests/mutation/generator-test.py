#!/usr/bin/env python3
"""What generate.py finds to change in a small file, against a list made by hand; and that the file
with all changes in it has each on lines of its own."""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
sys.dont_write_bytecode = True
import generate

SAMPLE = """#pragma once

// a < b in a comment
namespace Sample {

constexpr int kLimit{1};

class Counter {
 public:
  bool full() const { return count_ >= kLimit && on_; }

  void add(int by) {
    if (by == 0) return;
    count_ += by;
    tell("count_ + by == 1", by);
  }

 private:
  int count_{0};
  bool on_{true};
};

consteval bool never() { return 1 > 2; }

}  // namespace Sample
"""

EXPECTED = {
    ("return count_ >= kLimit && on_;", "count_ > kLimit && on_"),
    ("return count_ >= kLimit && on_;", "count_ < kLimit && on_"),
    ("return count_ >= kLimit && on_;", "count_ >= kLimit || on_"),
    ("return count_ >= kLimit && on_;", "!(count_ >= kLimit && on_)"),
    ("by == 0", "true"),
    ("by == 0", "false"),
    ("by == 0", "by != 0"),
    ("by == 0", "by == 1"),
    ("count_ += by;", ";"),
    ("count_ += by;", "count_ -= by;"),
    ('tell("count_ + by == 1", by);', ";"),
    ('tell("count_ + by == 1", by);', 'tell(by, "count_ + by == 1");'),
    ('count_ += by; tell("count_ + by == 1", by);', 'tell("count_ + by == 1", by); count_ += by;'),
}

content, mutants = generate.written(SAMPLE, generate.parsed(SAMPLE), set(), "Sample.h", 1)
found = {(mutant.before, mutant.after) for mutant in mutants}
if found != EXPECTED:
    sys.exit(f"not found: {EXPECTED - found}\nnot expected: {found - EXPECTED}")
if sorted(mutant.number for mutant in mutants) != list(range(1, len(EXPECTED) + 1)):
    sys.exit("the numbers are not 1 and so on")

lines = content.split("\n")
for mutant in mutants:
    first, last = mutant.lines
    if mutant.after != ";" and generate.squeeze(mutant.after) not in generate.squeeze(
        " ".join(lines[first - 1 : last])
    ):
        sys.exit(f"not at its lines {mutant.lines}: {mutant.after}")
    if f"::Mutation::on({mutant.number})" not in content:
        sys.exit(f"{mutant.number} is never in force")

_, rest = generate.written(SAMPLE, generate.parsed(SAMPLE), {mutants[0].key}, "Sample.h", 1)
if {mutant.key for mutant in rest} != {mutant.key for mutant in mutants[1:]}:
    sys.exit("a mutant that is dropped does not go alone")
print(f"{len(mutants)} mutants, as expected")
