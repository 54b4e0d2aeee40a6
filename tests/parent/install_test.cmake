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
run(${CMAKE_COMMAND} -G Ninja -S ${PROJECT} -B ${build} -Dkessil_DIR=${package} -DEXAMPLE=${EXAMPLE}
    -DCMAKE_BUILD_TYPE=Release ${SETTINGS})
run(${CMAKE_COMMAND} --build ${build})

execute_process(COMMAND ${LAUNCHER} ${build}/first_call${SUFFIX} ${KESSIL} ${LIBRARY}
    OUTPUT_VARIABLE said RESULT_VARIABLE code)
if(NOT code EQUAL 0 OR NOT said MATCHES "backup type 0, code 5 means: ")
    message(FATAL_ERROR "first_call ended with ${code} and said: ${said}")
endif()
