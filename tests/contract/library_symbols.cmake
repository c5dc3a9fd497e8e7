# What the library leaves undefined and the reference host supplies must stand in the contract.
# NM, LIBRARY, REFERENCE_HOST, CONTRACT

cmake_minimum_required(VERSION 3.25)

# The names of a library's strong dynamic symbols, without arguments and ABI tags.
function(list_symbols FILE FILTER RESULT)
    execute_process(COMMAND ${NM} -DC ${FILTER} ${FILE}
        OUTPUT_VARIABLE TEXT COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "[abi:cxx11]" "" TEXT "${TEXT}")
    string(REGEX MATCHALL "(^|\n)[0-9a-f ]* [A-UX-Z] [^\n(]+" NAMES "${TEXT}")
    list(TRANSFORM NAMES REPLACE "^[\n0-9a-f ]* [A-UX-Z] " "")
    list(REMOVE_DUPLICATES NAMES)
    set(${RESULT} ${NAMES} PARENT_SCOPE)
endfunction()

list_symbols(${LIBRARY} --undefined-only NEEDED)
list_symbols(${REFERENCE_HOST} --defined-only SUPPLIED)
file(STRINGS ${CONTRACT} CONTRACT_NAMES)

set(BEYOND "")
set(USED 0)
foreach(NAME IN LISTS NEEDED)
    if(NAME IN_LIST SUPPLIED)
        math(EXPR USED "${USED} + 1")
        if(NOT NAME IN_LIST CONTRACT_NAMES)
            string(APPEND BEYOND "\n  ${NAME}")
        endif()
    endif()
endforeach()
if(USED EQUAL 0)
    message(FATAL_ERROR "the library needs nothing of the host: nothing was compared")
endif()
if(BEYOND)
    message(FATAL_ERROR "the library needs more than the contract:${BEYOND}")
endif()
message(STATUS "the library needs ${USED} names of the contract")
