# LANGUAGES_SOURCE: the languages beside English as a source file that holds them.
set(LANGUAGES de fr ja)
set(LANGUAGES_SOURCE ${CMAKE_CURRENT_BINARY_DIR}/qrc_languages.cpp)
set(files "")
set(entries "")
foreach(language IN LISTS LANGUAGES)
    set(file ${CMAKE_CURRENT_BINARY_DIR}/zemo_${language}.qm)
    set(source ${CMAKE_CURRENT_LIST_DIR}/zemo_${language}.ts)
    add_custom_command(OUTPUT ${file} DEPENDS ${source} VERBATIM
                       COMMAND Qt6::lrelease -silent ${source} -qm ${file})
    list(APPEND files ${file})
    string(APPEND entries "<file>zemo_${language}.qm</file>")
endforeach()
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/languages.qrc
     CONTENT "<RCC><qresource prefix=\"/languages\">@entries@</qresource></RCC>\n" @ONLY)
add_custom_command(OUTPUT ${LANGUAGES_SOURCE}
                   DEPENDS ${files} ${CMAKE_CURRENT_BINARY_DIR}/languages.qrc VERBATIM
                   COMMAND Qt6::rcc --name languages -o ${LANGUAGES_SOURCE}
                           ${CMAKE_CURRENT_BINARY_DIR}/languages.qrc)
