# How everything is built so that a fault is hard to exploit and the libraries show their interface
# alone. tests/hardening holds the built files to it.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Everything is hidden but what a header of the libraries declares; each header says so, for all of
# it, by a pragma: type information must be exported with every class that a host derives from,
# throws or names as a template argument, and so none is forgotten. (The attribute on the namespace
# will not do: clang++ does not extend it to a definition in another block of that namespace.)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Fortify works by what the optimiser knows. The sanitizers check more and stand in its way.
set(LINKFLAP_FORTIFY -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
if(LINKFLAP_SANITIZE)
  set(LINKFLAP_FORTIFIED OFF)
else()
  set(LINKFLAP_FORTIFIED $<NOT:$<CONFIG:Debug>>)
endif()

set(LINKFLAP_HARDENING_COMPILE
    -fstack-protector-strong
    -fno-semantic-interposition  # no other library replaces a function of ours: ours may be inlined
    -fno-plt)                    # every address is bound before main(): a call needs no stub
set(LINKFLAP_HARDENING_LINK -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
add_compile_options(${LINKFLAP_HARDENING_COMPILE}
                    "$<$<BOOL:${LINKFLAP_FORTIFIED}>:${LINKFLAP_FORTIFY}>")
add_link_options(${LINKFLAP_HARDENING_LINK})

# linkflap_exports(LIBRARY): exports of what the library contains only what is public in our own
# namespaces (not the standard library's templates that it happened to need), and binds its calls of
# its own functions while linking. Variables stay shared by all who use them.
function(linkflap_exports library)
  set(map ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(${library} PRIVATE -Wl,--version-script=${map} -Wl,-Bsymbolic-functions)
  set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()
