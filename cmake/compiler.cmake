# Language level, warnings, sanitizers, and the compiler cache where there is one.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(KST_CCACHE ccache)
if(KST_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KST_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports these inside the standard library's own inlined code.
  add_compile_options(-Wno-restrict -Wno-stringop-overflow -Wno-maybe-uninitialized)
endif()
# One result on every machine and in every build type: no contraction to fused operations.
add_compile_options(-ffp-contract=off)
set(CMAKE_CXX_FLAGS_DEBUG "-g1 -O1")

if(WIN32)
  # UTF-16 at the system's calls, and no more of its headers than asked for: they define min, max and ERROR.
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
  # Sections of their own, so that what is not used is left out of the .exe.
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections)
endif()

if(KST_SANITIZE)
  add_compile_options(-fsanitize=${KST_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KST_SANITIZE})
  # The plain build speaks for all of them: what another compiler or the instrumentation sets off tells nothing.
  add_compile_options(-w)
endif()
if(KST_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
