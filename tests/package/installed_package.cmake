# Installs the build tree, moves it, builds a host and a plug-in against it, and runs the host.
# BUILD_DIR, CONSUMER_DIR, GENERATOR, CXX_COMPILER, CXX_FLAGS, PKG_CONFIG, BINDIR, LIBDIR, PLUGIN_DIR
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND mktemp -d OUTPUT_VARIABLE WORK_DIR OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)

function(fail MESSAGE)
    file(REMOVE_RECURSE ${WORK_DIR})
    message(FATAL_ERROR "${MESSAGE}")
endfunction()

# Runs a command and sets OUTPUT to what it printed.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE CODE
        OUTPUT_VARIABLE TEXT ERROR_VARIABLE TEXT OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT CODE EQUAL 0)
        list(JOIN ARGN " " COMMAND_LINE)
        fail("${COMMAND_LINE}\nended with ${CODE}:\n${TEXT}")
    endif()
    set(OUTPUT "${TEXT}" PARENT_SCOPE)
endfunction()

set(PREFIX ${WORK_DIR}/moved)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/first)
file(RENAME ${WORK_DIR}/first ${PREFIX})

# With CMake's package.
set(CONSUMER_BUILD ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${CONSUMER_BUILD} -G ${GENERATOR}
    -D CMAKE_PREFIX_PATH=${PREFIX} -D CMAKE_CXX_COMPILER=${CXX_COMPILER}
    -D CMAKE_CXX_FLAGS=${CXX_FLAGS} -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
run(${CMAKE_COMMAND} --build ${CONSUMER_BUILD})
run(${CONSUMER_BUILD}/consumer ${CONSUMER_BUILD})

# With pkg-config.
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --cflags --libs framework_service reference_host)
separate_arguments(PACKAGE_FLAGS UNIX_COMMAND "${OUTPUT}")
separate_arguments(COMPILER_FLAGS UNIX_COMMAND "${CXX_FLAGS}")
run(${CXX_COMPILER} -std=c++17 ${COMPILER_FLAGS} ${CONSUMER_DIR}/consumer.cpp
    -o ${WORK_DIR}/consumer ${PACKAGE_FLAGS} -Wl,-rpath,${PREFIX}/${LIBDIR})
run(${WORK_DIR}/consumer ${CONSUMER_BUILD})

# The moved program and the plug-ins find the moved libraries.
file(GLOB INSTALLED ${PREFIX}/${BINDIR}/* ${PREFIX}/${LIBDIR}/${PLUGIN_DIR}/*.so)
list(LENGTH INSTALLED COUNT)
if(COUNT LESS 2)
    fail("no program or no plug-in was installed: ${INSTALLED}")
endif()
foreach(FILE IN LISTS INSTALLED)
    run(ldd ${FILE})
    if(NOT OUTPUT MATCHES "libframework_service[^ ]* => ${PREFIX}/")
        fail("${FILE} does not find the installed library:\n${OUTPUT}")
    endif()
endforeach()

file(REMOVE_RECURSE ${WORK_DIR})
