# What every target of this project is compiled with.
add_library(zemo_options INTERFACE)
target_compile_features(zemo_options INTERFACE cxx_std_20)
target_compile_options(zemo_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wcast-align
    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wdouble-promotion
    # The arithmetic is part of the product: no fused multiply-add, on any processor.
    -ffp-contract=off)

# What the real-time functions of the rooms may call, where the compiler can tell (clang 20).
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-Wfunction-effects ZEMO_HAS_FUNCTION_EFFECTS)

# Position-independent programs, also where that is not the compiler's default.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# What distributions protect their packages with. The optimizer is needed for FORTIFY, and the
# sanitizers have checks of their own.
if(ZEMO_HARDEN AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT ZEMO_SANITIZE AND NOT ZEMO_FUZZ)
    include(Hardening)
endif()

if(ZEMO_SANITIZE)
    target_compile_options(zemo_options INTERFACE
        -fsanitize=${ZEMO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        # Tests in half the time, and reports that still name their lines.
        $<$<CONFIG:Debug>:-O1> $<$<CONFIG:Debug>:-g1>)
    target_link_options(zemo_options INTERFACE -fsanitize=${ZEMO_SANITIZE})
endif()
if(ZEMO_COVERAGE)
    # Counted by the source's own conditions, whatever the compiler makes of them.
    target_compile_options(zemo_options INTERFACE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(zemo_options INTERFACE -fprofile-instr-generate)
endif()
if(ZEMO_FUZZ)
    target_compile_options(zemo_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# zemo_room(NAME ROOT <include root> SOURCES ... LINKS ...): one room of the house.
# Only the rooms named in LINKS are on its include path, so a wrong include does not compile.
function(zemo_room name)
    cmake_parse_arguments(ROOM "" "ROOT" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_include_directories(${name} PUBLIC ${ROOM_ROOT})
    target_link_libraries(${name} PUBLIC ${ROOM_LINKS} PRIVATE zemo_options)
    # Not PIC, which would cost the core its inlining; Qt asks for that itself.
    target_compile_options(${name} PRIVATE
        $<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fPIE>)
    if("${ROOM_LINKS}" MATCHES "Qt6::")
        zemo_reuse_headers(${name} zemo_window_headers)
    else()
        zemo_reuse_headers(${name} zemo_core_headers)
    endif()
    if(ZEMO_HAS_FUNCTION_EFFECTS)
        target_compile_options(${name} PRIVATE -Wfunction-effects -Wperf-constraint-implies-noexcept)
    endif()
endfunction()

# Resources without the times of their files: the same source gives the same program anywhere.
set(CMAKE_AUTORCC_OPTIONS --format-version 1)
