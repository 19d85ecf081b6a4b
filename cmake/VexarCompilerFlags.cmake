# Warnings, sanitizers and the fuzzing instrumentation, applied per target.
set(VEXAR_SANITIZER_FLAGS "")
if(VEXAR_SANITIZE)
  list(APPEND VEXAR_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
endif()
if(VEXAR_TSAN)
  list(APPEND VEXAR_SANITIZER_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
endif()
if(VEXAR_FUZZ)
  list(APPEND VEXAR_SANITIZER_FLAGS -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
endif()

function(vexar_apply_flags target)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra
    $<$<COMPILE_LANGUAGE:CXX>:-Wno-missing-field-initializers>
    # GCC 12 reports -Wrestrict inside libstdc++'s std::string at -O2 and
    # above (GCC bug 105329): a false positive that says nothing of our code.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<BOOL:${VEXAR_WERROR}>:-Werror>
    ${VEXAR_SANITIZER_FLAGS})
  if(VEXAR_SANITIZER_FLAGS)
    target_link_options(${target} PRIVATE ${VEXAR_SANITIZER_FLAGS})
  endif()
endfunction()
