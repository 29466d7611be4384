# The fuzzing flavour: every library is built with coverage feedback for
# libFuzzer and with AddressSanitizer and UndefinedBehaviorSanitizer; only the
# harnesses link libFuzzer's driver. Needs clang (14 on Debian 12, with
# libclang-rt-14-dev for the runtime).
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "TALLIS_FUZZ needs clang: configure with -DCMAKE_CXX_COMPILER=clang++")
endif()

set(TALLIS_FUZZ_FLAGS -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
    -fno-omit-frame-pointer)
target_compile_options(tallis_sanitizers INTERFACE ${TALLIS_FUZZ_FLAGS})
target_link_options(tallis_sanitizers INTERFACE -fsanitize=fuzzer-no-link,address,undefined)

# tallis_add_fuzzer(<name> SOURCES <files>... LIBRARIES <libs>...): one
# libFuzzer program; its corpus of seeds lives in fuzz/corpus/<name without
# the fuzz_ prefix>/.
function(tallis_add_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE tallis_fuzzsupport ${ARG_LIBRARIES} tallis_options)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
