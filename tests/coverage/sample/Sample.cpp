// What the checker's own test is run on: `Sample.json` says of it what llvm-cov counted when
// `grade` was called with 3 alone.

char const* grade(int marks) {
  if (marks < 0) {
    return "none";
  }
  return marks > 2 && marks < 5 ? "passed" : "failed";
}
