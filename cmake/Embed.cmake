# embed_file(TARGET FILE NAME) compiles the text of FILE into TARGET, as
#
#     extern const std::string_view NAME;
#
# which whoever reads it declares. A changed file is compiled again.
function(embed_file TARGET FILE NAME)
    get_filename_component(FILE ${FILE} ABSOLUTE)
    set(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/embedded/${NAME}.cpp)
    add_custom_command(
        OUTPUT ${SOURCE}
        COMMAND ${CMAKE_COMMAND} -DFILE=${FILE} -DNAME=${NAME} -DSOURCE=${SOURCE}
                -P ${CMAKE_CURRENT_FUNCTION_LIST_FILE}
        DEPENDS ${FILE} ${CMAKE_CURRENT_FUNCTION_LIST_FILE}
        COMMENT "Embedding ${FILE}"
        VERBATIM)
    target_sources(${TARGET} PRIVATE ${SOURCE})
endfunction()

if(CMAKE_SCRIPT_MODE_FILE)
    file(READ ${FILE} TEXT)
    file(WRITE ${SOURCE} "#include <string_view>\n\n"
        "extern const std::string_view ${NAME};\n"
        "const std::string_view ${NAME} = R\"embedded(${TEXT})embedded\";\n")
endif()
