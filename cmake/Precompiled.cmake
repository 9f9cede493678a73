# Headers that many sources include are compiled once, and not with each of them. The static analysis
# compiles without them, so every source still includes what it needs.
option(ZEMO_PRECOMPILE "Compile the usual headers once" ON)

# zemo_usual_headers(NAME HEADERS ... LINKS ...): what targets of one kind include most.
function(zemo_usual_headers name)
    cmake_parse_arguments(USUAL "" "" "HEADERS;LINKS" ${ARGN})
    if(NOT ZEMO_PRECOMPILE)
        return()
    endif()
    file(CONFIGURE OUTPUT ${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_link_libraries(${name} PRIVATE ${USUAL_LINKS} zemo_options)
    list(TRANSFORM USUAL_HEADERS PREPEND "<")
    list(TRANSFORM USUAL_HEADERS APPEND ">")
    target_precompile_headers(${name} PRIVATE ${USUAL_HEADERS})
    target_compile_options(${name} PRIVATE # as rooms are compiled
        $<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fPIE>)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${name} PRIVATE -fpch-preprocess) # for ccache
    endif()
endfunction()

function(zemo_reuse_headers target name)
    if(ZEMO_PRECOMPILE)
        target_precompile_headers(${target} REUSE_FROM ${name})
        if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
            target_compile_options(${target} PRIVATE -fpch-preprocess)
        endif()
    endif()
endfunction()
