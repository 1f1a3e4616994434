# What every target of the project is compiled with.
add_library(linkflap_options INTERFACE)
target_compile_options(linkflap_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                                  -Wnon-virtual-dtor)
if(LINKFLAP_WERROR)
  target_compile_options(linkflap_options INTERFACE -Werror)
endif()

if(LINKFLAP_SANITIZE)
  set(sanitizers "${LINKFLAP_SANITIZE}")
  if(sanitizers MATCHES "undefined")
    string(APPEND sanitizers ",float-divide-by-zero,float-cast-overflow")
  endif()
  if(sanitizers MATCHES "integer")
    add_compile_options(-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizers.ignore)
  endif()
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()
