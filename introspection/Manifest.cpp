namespace {

/// The types that this library provides, readable by a loader without running the library:
/// NUL-terminated names, one after another.
[[gnu::section(".vek.type"), gnu::used, gnu::retain]] constinit char const manifest[] =
    "LinkFlap::Root\0"
    "LinkFlap::LinkFlapSm\0"
    "LinkFlap::LinkFlapIntfSm\0"
    "LinkFlap::LinkFlapProfileSm";

}  // namespace
