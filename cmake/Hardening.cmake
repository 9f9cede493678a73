# The protections of a release, added to zemo_options.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)

set(before "${CMAKE_REQUIRED_FLAGS}")
string(APPEND CMAKE_REQUIRED_FLAGS " -O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <string.h>\nint main() {}" ZEMO_HAS_FORTIFY_3)
set(CMAKE_REQUIRED_FLAGS "${before}")
target_compile_options(zemo_options INTERFACE
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${ZEMO_HAS_FORTIFY_3}>,3,2>)

# The last two: the control flow of x86 and of ARM.
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection
        -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "ZEMO_HAS${flag}" has)
    check_cxx_compiler_flag(${flag} ${has})
    if(${has})
        target_compile_options(zemo_options INTERFACE ${flag})
    endif()
endforeach()

foreach(flag -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    string(MAKE_C_IDENTIFIER "ZEMO_HAS${flag}" has)
    check_linker_flag(CXX ${flag} ${has})
    if(${has})
        target_link_options(zemo_options INTERFACE ${flag})
    endif()
endforeach()
