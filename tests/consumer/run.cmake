# Checks that an outside project can use SysEvent, both as a subdirectory and
# as an installed package:
#   cmake -DSOURCE_DIR=<repository> -DBUILD_DIR=<its build> -DWORK_DIR=<scratch dir> -P run.cmake
# The package half installs the library already built in BUILD_DIR, so the
# library is compiled once more only for the subdirectory half.
# Fails (non-zero exit) on the first step that fails. Builds without
# optimisation or debug information, to stay quick.
cmake_minimum_required(VERSION 3.25)

foreach(var SOURCE_DIR BUILD_DIR WORK_DIR)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "${var} is not set")
    endif()
endforeach()

set(consumer ${SOURCE_DIR}/tests/consumer)
set(common -G Ninja -DCMAKE_BUILD_TYPE=None)
set(no_extras -DSYSEVENT_BUILD_TESTS=OFF -DSYSEVENT_BUILD_BENCH=OFF -DSYSEVENT_BUILD_TOOLS=OFF)
file(REMOVE_RECURSE ${WORK_DIR})

function(step)
    message(STATUS "consumer: ${ARGN}")
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "consumer: failed (${rc}): ${ARGN}")
    endif()
endfunction()

# (a) The library as a subdirectory of the consumer.
step(${CMAKE_COMMAND} -S ${consumer} -B ${WORK_DIR}/subdirectory ${common} ${no_extras}
     -DSYSEVENT_CONSUMER_MODE=subdirectory -DSYSEVENT_SOURCE_DIR=${SOURCE_DIR})
step(${CMAKE_COMMAND} --build ${WORK_DIR}/subdirectory -j 2)
step(${WORK_DIR}/subdirectory/consumer)

# (b) The library installed from its own build, then found as a package.
step(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix)
step(${CMAKE_COMMAND} -S ${consumer} -B ${WORK_DIR}/package ${common}
     -DSYSEVENT_CONSUMER_MODE=package -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix)
step(${CMAKE_COMMAND} --build ${WORK_DIR}/package -j 2)
step(${WORK_DIR}/package/consumer)
