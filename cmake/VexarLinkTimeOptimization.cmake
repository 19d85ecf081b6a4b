# Link-time optimization for optimized builds.
#
# A logging call crosses a dozen small functions in as many files (the lock,
# the queue, the pool, the list, the semaphore, the clock); optimizing across
# files inlines them, about a quarter fewer instructions per call. Only with
# GCC: the fuzz build uses clang, whose link-time optimization needs a linker
# plugin that Debian installs separately. Not with sanitizers, whose builds
# are for finding faults, not for speed.
include(CheckIPOSupported)

set(VEXAR_LTO_ACTIVE OFF)
if(VEXAR_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo)$"
   AND NOT (VEXAR_SANITIZE OR VEXAR_TSAN OR VEXAR_FUZZ))
  check_ipo_supported(RESULT supported OUTPUT reason LANGUAGES C CXX)
  if(supported)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    set(VEXAR_LTO_ACTIVE ON)
  else()
    message(STATUS "link-time optimization not available: ${reason}")
  endif()
endif()

# The installed static library must also link into programs built without
# link-time optimization (or with another compiler), so its objects carry
# machine code beside the optimizer's intermediate form.
function(vexar_keep_objects_linkable_without_lto target)
  if(VEXAR_LTO_ACTIVE)
    target_compile_options(${target} PRIVATE -ffat-lto-objects)
  endif()
endfunction()
