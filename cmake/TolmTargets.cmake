# Settings that every target of the project shares.
add_library(TolmSettings INTERFACE)
target_compile_options(TolmSettings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wconversion -Wno-sign-conversion)
if(TOLM_WARNINGS_AS_ERRORS)
  target_compile_options(TolmSettings INTERFACE -Werror)
endif()
if(TOLM_SANITIZE)
  target_compile_options(TolmSettings INTERFACE -fsanitize=${TOLM_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(TolmSettings INTERFACE -fsanitize=${TOLM_SANITIZE})
endif()
if(TOLM_FUZZ)
  target_compile_options(TolmSettings INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(TOLM_COVERAGE)
  target_compile_options(TolmSettings INTERFACE --coverage)
  target_link_options(TolmSettings INTERFACE --coverage)
endif()

# tolm_export_only(<library> <map>): the library exports what the map lists and keeps the rest to itself, also the
# parts of other libraries that its code instantiates; so two libraries never share them by accident, and a host can
# unload it.
function(tolm_export_only library map)
  target_link_options(${library} PRIVATE "LINKER:--version-script=${map}")
  set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS "${map}")
endfunction()
