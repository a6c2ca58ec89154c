# One target that carries every warning; each target of the project links it.
add_library(qb_warnings INTERFACE)
target_compile_options(qb_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Woverloaded-virtual -Wnon-virtual-dtor -Wcast-qual -Wformat=2 -Wimplicit-fallthrough
  -Wnull-dereference -Wextra-semi $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op>)
if(QUILLBASE_FUZZ)
  target_compile_options(qb_warnings INTERFACE -fsanitize=fuzzer-no-link,address,undefined)
  target_link_options(qb_warnings INTERFACE -fsanitize=address,undefined)
endif()
if(QUILLBASE_WARNINGS_AS_ERRORS)
  target_compile_options(qb_warnings INTERFACE -Werror)
endif()
if(QUILLBASE_SANITIZE)
  target_compile_options(qb_warnings INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(qb_warnings INTERFACE -fsanitize=address,undefined)
  # The sanitizers' instrumentation makes GCC 12 see paths that do not exist; so does its optimiser.
  target_compile_options(qb_warnings INTERFACE -Wno-null-dereference)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_compile_options(qb_warnings INTERFACE -Wno-null-dereference)
endif()
target_compile_definitions(qb_warnings INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x060400
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
