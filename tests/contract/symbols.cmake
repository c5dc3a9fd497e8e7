# Who defines and who needs what of the contract, told by the symbols of what was built.
# NM, CONTRACT, LIBRARY, REFERENCE_HOST, MINIMAL_HOST (objects), PLUGINS, INCLUDE_DIR
cmake_minimum_required(VERSION 3.25)

# Sets RESULT to the names of the strong symbols, without arguments and ABI tags; the
# tables of a class follow from its functions.
function(list_symbols RESULT)
    execute_process(COMMAND ${NM} -C ${ARGN}
        OUTPUT_VARIABLE TEXT COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "[abi:cxx11]" "" TEXT "${TEXT}")
    string(REGEX MATCHALL "(^|\n)[0-9a-f ]* [A-UX-Z] [^\n(]+" NAMES "${TEXT}")
    list(TRANSFORM NAMES REPLACE "^[\n0-9a-f ]* [A-UX-Z] " "")
    list(FILTER NAMES EXCLUDE REGEX "^(typeinfo |vtable |__odr_asan)")
    list(REMOVE_DUPLICATES NAMES)
    if(NOT NAMES)
        message(FATAL_ERROR "no symbols: ${ARGN}")
    endif()
    set(${RESULT} ${NAMES} PARENT_SCOPE)
endfunction()

# Fails if a name is left.
function(expect_none WHAT)
    if(ARGN)
        list(JOIN ARGN "\n  " NAMES)
        message(SEND_ERROR "${WHAT}:\n  ${NAMES}")
    endif()
endfunction()

file(STRINGS ${CONTRACT} CONTRACT_NAMES)

# The minimal host defines the contract: each name, and nothing beyond.
list_symbols(MINIMAL --defined-only ${MINIMAL_HOST})
set(MISSING ${CONTRACT_NAMES})
list(REMOVE_ITEM MISSING ${MINIMAL})
expect_none("the minimal host does not define" ${MISSING})
list(REMOVE_ITEM MINIMAL ${CONTRACT_NAMES})
expect_none("the minimal host defines beyond the contract" ${MINIMAL})

# The reference host shows the contract and what its own headers declare.
list_symbols(SUPPLIED -D --defined-only ${REFERENCE_HOST})
set(MISSING ${CONTRACT_NAMES})
list(REMOVE_ITEM MISSING ${SUPPLIED})
expect_none("the reference host does not define" ${MISSING})
file(GLOB HEADERS ${INCLUDE_DIR}/reference_host/*.h)
set(DECLARED "")
foreach(HEADER IN LISTS HEADERS)
    file(READ ${HEADER} TEXT)
    string(APPEND DECLARED "${TEXT}")
endforeach()
set(BEYOND ${SUPPLIED})
list(REMOVE_ITEM BEYOND ${CONTRACT_NAMES})
set(UNDECLARED "")
foreach(NAME IN LISTS BEYOND)
    string(REGEX REPLACE ".*[: ]" "" LAST "${NAME}")
    string(REGEX MATCH "\n[^ \n][^\n]*[^A-Za-z]${LAST}[( :]|\n   [^\n]*[^A-Za-z]${LAST}\\("
        FOUND "${DECLARED}")
    if(NOT FOUND)
        list(APPEND UNDECLARED ${NAME})
    endif()
endforeach()
expect_none("the reference host shows what no header declares" ${UNDECLARED})

# The library and the plug-ins need of a host no more than the contract.
set(USED "")
foreach(FILE IN LISTS LIBRARY PLUGINS)
    list_symbols(NEEDED -D --undefined-only ${FILE})
    set(ELSEWHERE ${NEEDED})
    list(REMOVE_ITEM ELSEWHERE ${SUPPLIED})
    list(REMOVE_ITEM NEEDED ${ELSEWHERE})
    list(APPEND USED ${NEEDED})
    list(REMOVE_ITEM NEEDED ${CONTRACT_NAMES})
    expect_none("${FILE} needs more than the contract" ${NEEDED})
endforeach()
if(NOT USED)
    message(SEND_ERROR "nothing is needed of the host: nothing was compared")
endif()
foreach(FILE IN LISTS PLUGINS)
    execute_process(COMMAND ${OBJDUMP} -p ${FILE} OUTPUT_VARIABLE TEXT COMMAND_ERROR_IS_FATAL ANY)
    if(TEXT MATCHES "NEEDED[^\n]*reference_host")
        message(SEND_ERROR "${FILE} links the reference host")
    endif()
endforeach()
