# lumo_embed(<variable> <header> <function> <file>...): a source that has the content of text files. It defines
# the function, which the header declares as `const std::map<std::string, std::string_view>& centre::function()`:
# the contents by the names of the files. The variable gets the source's path.
function(lumo_embed variable header function)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/embedded/${function}.cpp)
    set(files ${ARGN})
    list(TRANSFORM files PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    list(JOIN files "|" joined)
    set(script ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/LumoEmbedScript.cmake)
    add_custom_command(OUTPUT ${source}
        COMMAND ${CMAKE_COMMAND} -D "FILES=${joined}" -D HEADER=${header} -D FUNCTION=${function} -D SOURCE=${source}
            -P ${script}
        DEPENDS ${files} ${script} VERBATIM)
    set(${variable} ${source} PARENT_SCOPE)
endfunction()
