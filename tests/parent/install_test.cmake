# Installs the parent library into an empty prefix, builds a project outside the tree against it, and runs what it built.
set(prefix ${WORK}/prefix)
set(build ${WORK}/build)
file(REMOVE_RECURSE ${WORK})

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${KESSIL_BUILD} --component parent --prefix ${prefix})
# A prefix of its own is outside the places that a cross compiler searches, so the package is pointed at.
file(GLOB_RECURSE config ${prefix}/*/kessil-config.cmake)
cmake_path(GET config PARENT_PATH package)
run(${CMAKE_COMMAND} -G Ninja -S ${PROJECT} -B ${build} -Dkessil_DIR=${package} -DEXAMPLES=${EXAMPLES}
    -DCMAKE_BUILD_TYPE=Release ${SETTINGS})
run(${CMAKE_COMMAND} --build ${build})

execute_process(COMMAND ${LAUNCHER} ${build}/first_call${SUFFIX} ${KESSIL} ${LIBRARY}
    OUTPUT_VARIABLE said RESULT_VARIABLE code)
if(NOT code EQUAL 0 OR NOT said MATCHES "backup type 0, code 5 means: ")
    message(FATAL_ERROR "first_call ended with ${code} and said: ${said}")
endif()

file(WRITE ${WORK}/calls "ListMachines result=1 items=web:1:2:3 log=looking level=4\n")
set(ENV{KESSIL_SCRIPT} ${WORK}/calls)
execute_process(COMMAND ${LAUNCHER} ${build}/list_machines${SUFFIX} ${KESSIL} ${ADAPTER} path
    OUTPUT_VARIABLE said RESULT_VARIABLE code)
string(REPLACE "\r" "" said "${said}")
if(NOT code EQUAL 0 OR NOT said STREQUAL "level 4: looking\nweb, 2\n")
    message(FATAL_ERROR "list_machines ended with ${code} and said: ${said}")
endif()
